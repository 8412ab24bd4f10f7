// Makes the MCP bundle and the registry's server.json:
//   SOURCE_DATE_EPOCH=SECONDS node pack.mjs FOLDER BUNDLE SERVER_JSON
// FOLDER has all that goes into the bundle but its manifest, with the Linux program in server/.
import { execFileSync } from 'node:child_process';
import { createHash } from 'node:crypto';
import { readFileSync, writeFileSync } from 'node:fs';
import { basename, join } from 'node:path';
import { describe } from './program.mjs';

const [folder, bundle, serverFile] = process.argv.slice(2);
const template = (name) => JSON.parse(readFileSync(join(import.meta.dirname, name), 'utf8'));
const write = (path, value) => writeFileSync(path, `${JSON.stringify(value, null, 2)}\n`);

// The official packer notes the time at which it runs. In its place goes the time of the sources.
function setTimes(path) {
  const date = new Date(process.env.SOURCE_DATE_EPOCH * 1000);
  const day = ((date.getUTCFullYear() - 1980) << 9) | ((date.getUTCMonth() + 1) << 5) | date.getUTCDate();
  const time = (date.getUTCHours() << 11) | (date.getUTCMinutes() << 5) | (date.getUTCSeconds() >> 1);
  const zip = readFileSync(path);
  const set = (at) => zip.writeUInt16LE(day, zip.writeUInt16LE(time, at));
  const end = zip.lastIndexOf('PK\x05\x06');
  let entry = zip.readUInt32LE(end + 16);
  for (let left = zip.readUInt16LE(end + 10); left > 0; --left) {
    set(entry + 12);
    set(zip.readUInt32LE(entry + 42) + 10);
    const [name, extra, comment] = [28, 30, 32].map((field) => zip.readUInt16LE(entry + field));
    entry += 46 + name + extra + comment;
  }
  writeFileSync(path, zip);
}

const { version, tools } = describe(join(folder, 'server', 'zorvik_mcp'));
write(join(folder, 'manifest.json'), { ...template('manifest.json'), version, tools });
const mcpb = join(import.meta.dirname, 'node_modules', '.bin', 'mcpb');
execFileSync(mcpb, ['pack', folder, bundle], { stdio: ['ignore', 'ignore', 'inherit'] });
setTimes(bundle);

// The address tells both where the bundle will lie and, by its owner, what the registry calls it.
const { $schema, packages, ...about } = template('server.json');
const [{ identifier, ...kind }] = packages;
const address = new URL(identifier.replaceAll('${version}', version));
const [owner] = address.pathname.split('/').filter(Boolean);
const namespace =
  address.host === 'github.com' ? `io.github.${owner}` : address.hostname.split('.').reverse().join('.');
const fileSha256 = createHash('sha256').update(readFileSync(bundle)).digest('hex');
write(serverFile, {
  $schema,
  name: `${namespace}/zorvik-mcp`,
  ...about,
  version,
  packages: [{ ...kind, identifier: `${address}/${basename(bundle)}`, fileSha256 }],
});
