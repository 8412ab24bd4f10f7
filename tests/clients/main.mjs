// Drives the MCP clients that people use, one after the other: each with a home, a folder for its
// temporary files, an editor and a server of its own. See scripts/clients.
import assert from 'node:assert/strict';
import { spawn } from 'node:child_process';
import { once } from 'node:events';
import { existsSync, mkdirSync, readFileSync, readdirSync, writeFileSync } from 'node:fs';
import { dirname, join, resolve } from 'node:path';
import { after, test } from 'node:test';
import { parseArgs } from 'node:util';
import { temporaryHome } from '../interop/support.mjs';
import { documentedPath, modelClients } from './clients.mjs';
import { inspectors } from './inspector.mjs';
import { startModel } from './model.mjs';
import { steps, stepsWithout } from './session.mjs';

const root = join(import.meta.dirname, '..', '..');
const modules = join(import.meta.dirname, 'node_modules');
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
const read = (...names) => readFileSync(join(...names), 'utf8');
const version = (name) => JSON.parse(read(modules, name, 'package.json')).version;

// Starts a program of a client, or another. Its output, both streams in one, stays in `started`.
function start({ place, environment, started }, program, args, input = 'pipe') {
  const bundled = join(modules, '.bin', program);
  const child = spawn(existsSync(bundled) ? bundled : program, args, {
    cwd: join(place, 'work'),
    env: environment,
    stdio: [input, 'pipe', 'pipe'],
    timeout: patience,
    killSignal: 'SIGKILL',
  });
  const ended = new Promise((done) => child.on('error', (error) => done(`${error}`)).on('close', done));
  const run = { command: [program, ...args].join(' '), output: '', ended };
  for (const stream of [child.stdout, child.stderr]) stream.on('data', (data) => (run.output += data));
  run.end = () => child.kill() && ended;
  run.says = async (pattern) => {
    while (!pattern.test(run.output)) {
      const over = ended.then((status) => assert.fail(`${program} ended with ${status}`));
      await Promise.race([once(child.stdout, 'data'), over]);
    }
    return pattern.exec(run.output);
  };
  started.push(run);
  return run;
}

// The versions that the server served tools under: what it logged at `initialize`, or the one version
// that does without.
function protocols(logs) {
  const served = logs.filter((log) => log.includes(' -> ok'));
  return [...new Set(served.map((log) => /servindo (\S+)/.exec(log)?.[1] ?? '2026-07-28'))].join(', ');
}

async function driveModelClient(client, { run, record, home, place, environment }) {
  const model = await startModel(record);
  try {
    Object.assign(environment, client.environment?.(model.address));
    let settings = client.settings?.(model.address) ?? '';
    const add = client.add.replace(documentedPath, server);
    if (client.also) settings += `${add}${client.also(home)}`;
    if (client.file) {
      mkdirSync(dirname(join(place, client.file)), { recursive: true });
      writeFileSync(join(place, client.file), settings);
    }
    if (!client.also) await run(...add.split(' '));
    assert.match((await run(client.program, 'mcp', 'list')).output, client.connected, 'not listed as connected');
    assert.equal((await run(client.program, ...client.session)).status, 0, 'the client did not end well');
  } finally {
    model.close();
  }
}

// The commands that are tried are those that people read.
function isDocumented({ add }) {
  return ['docs/clients.md', 'docs/world_editor/MCP.md'].every((page) =>
    read(root, page)
      .replaceAll(/\/home\/ana\/.local\/bin\/zorvik_mcp|C:\\\\ZORVIK\\\\zorvik_mcp.exe/g, documentedPath)
      .replaceAll(/^ {4}/gm, '')
      .includes(add),
  );
}

async function play(client, t, record) {
  const place = temporaryHome(t);
  const home = join(place, 'mcp');
  for (const folder of ['mcp', 'tmp', 'work']) mkdirSync(join(place, folder));
  const environment = {
    PATH: `${dirname(process.execPath)}:${process.env.PATH}`,
    LANG: 'C.UTF-8',
    HOME: place,
    TMPDIR: join(place, 'tmp'),
    ZORVIK_MCP_HOME: home,
    MCP_AUTO_OPEN_ENABLED: 'false',
  };
  const context = { place, home, record, server, environment, screenshot: options.screenshot, started: [] };
  context.start = (program, args, input) => start(context, program, args, input);
  context.run = async (program, ...args) => {
    const run = context.start(program, args, 'ignore');
    return { status: await run.ended, output: run.output };
  };
  const logs = () => readdirSync(join(home, 'logs')).map((name) => read(home, 'logs', name));
  const editor = context.start(editorProgram, ['--id', 'vale']);
  try {
    await editor.says(/^pronto vale/);
    await (client.drive ?? ((all) => driveModelClient(client, all)))(context);
    assert.deepEqual(record.problems, []);
    assert.equal(record.results, record.steps.length, 'the session broke off');
    assert.equal(record.tools, 71, 'tools seen');
    assert.equal(record.author, `${client.author} ${version(client.package)}`, 'author in the history');
    record.protocol = protocols(logs());
    assert.match(record.protocol, /^\d{4}-\d\d-\d\d$/, 'one protocol version');
    assert.ok(isDocumented(client), 'its command is not the documented one');
    record.result = 'pass';
  } catch (error) {
    console.error(`\n!!! ${client.name} FAILED !!!\n${record.problems.join('\n')}`);
    for (const { command, output } of context.started) console.error(`$ ${command}\n${output}`);
    if (existsSync(join(home, 'logs'))) console.error(logs().join('\n'));
    throw error;
  } finally {
    await editor.end();
  }
}

const chosen = [...modelClients, ...inspectors].filter(
  ({ name }) => !wanted.length || wanted.some((part) => name.toLowerCase().includes(part.toLowerCase())),
);
assert.ok(chosen.length, `no such client: ${wanted}`);
assert.ok(!options.update || !wanted.length, '--update takes all clients');
mkdirSync(dirname(options.screenshot), { recursive: true });
let table =
  '| Client | Version | Protocol | Tools seen | Calls | Picture reaches the model | Result |\n' +
  '|---|---|---|---|---|---|---|\n';
for (const client of chosen) {
  const missing = [client.package, client.needs].find((name) => name && !existsSync(join(modules, name)));
  test(client.name, async (t) => {
    if (missing) {
      table += `| ${client.name} | | | | | | SKIPPED |\n`;
      return t.skip(`!!! SKIPPED, since ${missing} can't be had !!!`);
    }
    const record = { steps: client.picture ? stepsWithout(client.viewer) : steps, result: 'FAIL' };
    Object.assign(record, { results: 0, calls: 0, tools: 0, protocol: '', problems: [] });
    await play(client, t, record).finally(() => {
      const { protocol, tools, calls, result } = record;
      const picture = result === 'pass' ? (client.picture ?? 'yes') : '';
      const row = [client.name, version(client.package), protocol, tools, calls, picture, result];
      table += `| ${row.join(' | ')} |\n`;
    });
  });
}
after(() => {
  console.log(`\n${table}`);
  if (!options.update) return;
  const path = join(root, 'docs/clients.md');
  const marked = /(<!-- result: begin -->\n)[^]*(<!-- result: end -->)/;
  assert.match(read(path), marked);
  writeFileSync(path, read(path).replace(marked, (whole, begin, end) => `${begin}${table}${end}`));
});
