// Looks at what scripts/package has put into DIST, as those see it who get it.
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { createHash } from 'node:crypto';
import { existsSync, mkdtempSync, readFileSync, readdirSync, rmSync, statSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { dirname, join } from 'node:path';
import { test } from 'node:test';
import { describe } from './program.mjs';

const dist = process.env.DIST;
const find = (end) => join(dist, readdirSync(dist).find((name) => name.endsWith(end)));
const readJson = (...path) => JSON.parse(readFileSync(join(...path), 'utf8'));
const same = (one, other) => assert.ok(readFileSync(one).equals(readFileSync(other)), `${one} is not ${other}`);
const place = mkdtempSync(join(tmpdir(), 'zorvik-dist-'));
const folder = (name) => join(place, name);
process.on('exit', () => rmSync(place, { recursive: true }));
execFileSync('unzip', ['-q', find('.zip'), '-d', folder('windows')]);
execFileSync('tar', ['-xzf', find('.tar.gz'), '-C', place]);
const mcpb = (...options) =>
  execFileSync(join(import.meta.dirname, 'node_modules', '.bin', 'mcpb'), options, { stdio: 'ignore' });
mcpb('unpack', find('.mcpb'), folder('bundle'));

for (const [name, suffix] of [['windows', '.exe'], ['zorvik', '']])
  test(`${name} has its programs in front, and every page that a page leads to`, () => {
    for (const program of ['zorvik_mcp', 'zorvik_editor_check', 'zorvik_sample_editor'])
      assert.ok(suffix || statSync(join(folder(name), program)).mode & 0o111, program);
    const entries = readdirSync(folder(name), { recursive: true });
    assert.ok(entries.includes('LEIA-ME.md') && entries.includes(`zorvik_mcp${suffix}`));
    for (const page of entries.filter((entry) => entry.endsWith('.md'))) {
      const text = readFileSync(join(folder(name), page), 'utf8');
      for (const [, target] of text.matchAll(/\]\(([^)#:]+)(#[^)]*)?\)/g))
        assert.ok(existsSync(join(folder(name), dirname(page), target)), `${page}: ${target}`);
    }
  });

test('the bundle has the programs of both systems, and tells their tools', () => {
  mcpb('validate', folder('bundle'));
  const { version, tools, server, icon } = readJson(folder('bundle'), 'manifest.json');
  assert.equal(tools.length, 71);
  const linux = server.mcp_config.command.replace('${__dirname}', folder('bundle'));
  const windows = server.mcp_config.platform_overrides.win32.command.replace('${__dirname}', folder('bundle'));
  assert.equal(linux, join(folder('bundle'), server.entry_point));
  assert.deepEqual(describe(linux), { version, tools });
  same(linux, join(folder('zorvik'), 'zorvik_mcp'));
  same(windows, join(folder('windows'), 'zorvik_mcp.exe'));
  const size = readFileSync(join(folder('bundle'), icon)).subarray(16, 24);
  assert.deepEqual([size.readUInt32BE(0), size.readUInt32BE(4)], [512, 512]);
});

test("server.json holds the registry's rules and the bundle's sum", () => {
  const { name, title, description, version, packages } = readJson(dist, 'server.json');
  assert.match(name, /^[a-zA-Z0-9.-]+\/[a-zA-Z0-9._-]+$/);
  assert.ok(title && title.length <= 100 && description && description.length <= 100);
  assert.equal(version, readJson(folder('bundle'), 'manifest.json').version);
  const sum = createHash('sha256').update(readFileSync(find('.mcpb'))).digest('hex');
  const [{ identifier, ...rest }] = packages;
  assert.deepEqual(rest, { registryType: 'mcpb', transport: { type: 'stdio' }, fileSha256: sum });
  assert.match(identifier, new RegExp(`^https://\\S+/zorvik_mcp-${version}\\.mcpb$`));
  execFileSync('sha256sum', ['--check', '--strict', '--quiet', 'SHA256SUMS'], { cwd: dist });
});
