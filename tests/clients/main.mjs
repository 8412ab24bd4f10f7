// Drives the MCP clients that people use, one after the other: each with a home, a folder for its
// temporary files, an editor and a server of its own. See scripts/clients.
import assert from 'node:assert/strict';
import { spawn } from 'node:child_process';
import { existsSync, mkdirSync, mkdtempSync, readFileSync, readdirSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { dirname, join, resolve } from 'node:path';
import { parseArgs } from 'node:util';
import { documentedPath, modelClients } from './clients.mjs';
import { inspectors } from './inspector.mjs';
import { startModel } from './model.mjs';
import { steps, stepsWithout } from './session.mjs';

const here = import.meta.dirname;
const root = join(here, '..', '..');
const modules = join(here, 'node_modules');
const patience = 120_000;
const { values: options, positionals: wanted } = parseArgs({
  allowPositionals: true,
  options: {
    server: { type: 'string', default: join(root, 'build/release/bin/zorvik_mcp') },
    editor: { type: 'string' },
    screenshot: { type: 'string', default: join(root, 'build/clients/inspector.png') },
    update: { type: 'boolean', default: false },
  },
});
const server = resolve(options.server);
const editorProgram = resolve(options.editor ?? join(dirname(server), 'zorvik_sample_editor'));
const version = (name) => JSON.parse(readFileSync(join(modules, name, 'package.json'), 'utf8')).version;

// Starts a program of a client, or another; its output, both streams in one, stays in the record.
function start(context, program, args) {
  const bundled = join(modules, '.bin', program);
  const child = spawn(existsSync(bundled) ? bundled : program, args, {
    cwd: context.folder,
    env: context.environment,
    stdio: ['pipe', 'pipe', 'pipe'],
    timeout: patience,
    killSignal: 'SIGKILL',
  });
  let output = '';
  const ended = new Promise((done) => child.on('error', (error) => done(`${error}`)).on('close', done));
  if (!context.keepsInput.includes(program)) child.stdin.end();
  context.evidence.push(() => `$ ${program} ${args.join(' ')}\n${output}`);
  for (const stream of [child.stdout, child.stderr]) stream.on('data', (data) => (output += data));
  return {
    ended: ended.then((status) => ({ status, output })),
    end: () => (child.kill(), ended),
    says: (pattern) =>
      new Promise((found, failed) => {
        const look = () => pattern.test(output) && found(pattern.exec(output));
        child.stdout.on('data', look);
        look();
        ended.then((status) => failed(new Error(`${program} ended with ${status}`)));
      }),
  };
}

// The versions that the server served tools under: what it logged at `initialize`, or the one version
// that does without.
function protocols(home) {
  const logs = readdirSync(join(home, 'logs')).map((name) => readFileSync(join(home, 'logs', name), 'utf8'));
  const served = logs.filter((log) => log.includes(' -> ok'));
  return [...new Set(served.map((log) => /servindo (\S+)/.exec(log)?.[1] ?? '2026-07-28'))].join(', ');
}

async function driveModelClient(client, context) {
  const { run, record, home, place } = context;
  const model = await startModel(record);
  try {
    const { address } = model;
    Object.assign(context.environment, client.environment?.(address));
    let settings = client.settings?.(address) ?? '';
    const add = client.add.replace(documentedPath, server);
    if (client.also) settings += `${add}${client.also(home)}`;
    if (client.file) {
      mkdirSync(dirname(join(place, client.file)), { recursive: true });
      writeFileSync(join(place, client.file), settings);
    }
    if (!client.also) await run(...add.split(' '));
    const { output } = await run(client.program, 'mcp', 'list');
    assert.match(output, client.connected, 'not listed as connected');
    const { status } = await run(client.program, ...client.session);
    assert.equal(status, 0, 'the client did not end well');
  } finally {
    model.close();
  }
}

async function play(client) {
  const place = mkdtempSync(join(tmpdir(), 'zorvik-clients-'));
  const home = join(place, 'mcp');
  const record = { steps: client.picture ? stepsWithout(client.viewer) : steps };
  Object.assign(record, { results: 0, calls: 0, tools: 0, problems: [] });
  const context = { place, home, record, server, screenshot: options.screenshot, evidence: [] };
  context.folder = join(place, 'work');
  context.keepsInput = [editorProgram, 'mcp-inspector'];
  context.environment = {
    PATH: `${dirname(process.execPath)}:${process.env.PATH}`,
    LANG: 'C.UTF-8',
    HOME: place,
    TMPDIR: join(place, 'tmp'),
    ZORVIK_MCP_HOME: home,
    MCP_AUTO_OPEN_ENABLED: 'false',
  };
  context.start = (program, args) => start(context, program, args);
  context.run = (program, ...args) => context.start(program, args).ended;
  for (const folder of ['mcp', 'tmp', 'work']) mkdirSync(join(place, folder));
  mkdirSync(dirname(options.screenshot), { recursive: true });
  const began = Date.now();
  const editor = context.start(editorProgram, ['--id', 'vale']);
  try {
    await editor.says(/^pronto vale/);
    await (client.drive ?? ((all) => driveModelClient(client, all)))(context);
    assert.equal(record.results, record.steps.length, 'the session broke off');
    assert.equal(record.tools, 71, 'tools seen');
    assert.equal(record.author, `${client.author} ${version(client.package)}`, 'author in the history');
    record.protocol = protocols(home);
    assert.match(record.protocol, /^\d{4}-\d\d-\d\d$/, 'one protocol version');
  } catch (error) {
    record.problems.push(error.stack);
  }
  await editor.end();
  record.seconds = Math.round((Date.now() - began) / 1000);
  if (record.problems.length) {
    console.error(`\n!!! ${client.name} FAILED !!!\n${record.problems.join('\n')}`);
    for (const text of context.evidence) console.error(text());
    const logs = join(home, 'logs');
    for (const name of existsSync(logs) ? readdirSync(logs) : [])
      console.error(`${name}:\n${readFileSync(join(logs, name), 'utf8')}`);
  }
  rmSync(place, { recursive: true, force: true, maxRetries: 9, retryDelay: 300 });
  return record;
}

// The commands that are tried are those that people read.
function isDocumented({ add }) {
  const texts = ['docs/clients.md', 'docs/world_editor/MCP.md'].map((name) =>
    readFileSync(join(root, name), 'utf8')
      .replaceAll(/\/home\/ana\/.local\/bin\/zorvik_mcp|C:\\\\ZORVIK\\\\zorvik_mcp.exe/g, documentedPath)
      .replaceAll(/^ {4}/gm, ''),
  );
  return texts.every((text) => text.includes(add));
}

const chosen = [...modelClients, ...inspectors].filter(
  ({ name }) => !wanted.length || wanted.some((part) => name.toLowerCase().includes(part.toLowerCase())),
);
assert.ok(chosen.length, `no such client: ${wanted}`);
let table = '| Client | Version | Protocol | Tools seen | Calls | Picture reaches the model | Result |\n|---|---|---|---|---|---|---|\n';
let failures = 0;
for (const client of chosen) {
  const missing = [client.package, client.needs ?? client.package].find((name) => !existsSync(join(modules, name)));
  if (missing) {
    console.error(`\n!!! SKIPPED: ${client.name}, since ${missing} can't be had !!!`);
    table += `| ${client.name} | | | | | | SKIPPED |\n`;
    continue;
  }
  const record = await play(client);
  if (!isDocumented(client)) record.problems.push('its command is not the documented one');
  const passed = !record.problems.length;
  if (!passed) ++failures;
  const row = [
    client.name,
    version(client.package),
    record.protocol ?? '',
    record.tools,
    record.calls,
    passed ? (client.picture ?? 'yes') : '',
    passed ? 'pass' : 'FAIL',
  ];
  console.log(`${row.join(' · ')} (${record.seconds} s)${passed ? '' : `\n${record.problems.join('\n')}`}`);
  table += `| ${row.join(' | ')} |\n`;
}
console.log(`\n${table}`);
if (options.update) {
  assert.ok(!wanted.length, '--update takes all clients');
  const path = join(root, 'docs/clients.md');
  const marked = /(<!-- result: begin -->\n)[^]*(<!-- result: end -->)/;
  const page = readFileSync(path, 'utf8');
  assert.match(page, marked);
  writeFileSync(path, page.replace(marked, (whole, begin, end) => `${begin}${table}${end}`));
}
process.exitCode = failures ? 1 : 0;
