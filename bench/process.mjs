// Measures zorvik_mcp and a server written with the npm SDK as whole processes, in turns:
//   node process.mjs BIN ROUNDS OUT.json
import { spawn } from 'node:child_process';
import { mkdtempSync, readFileSync, readdirSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { fileURLToPath } from 'node:url';

const [bin, rounds, out] = process.argv.slice(2);
const imageSize = 12_000_000;
const home = mkdtempSync(join(tmpdir(), 'zorvik-bench-'));
const homeInMemory = mkdtempSync('/dev/shm/zorvik-bench-');
const env = { ...process.env, ZORVIK_MCP_HOME: home };
const catalog = join(home, 'catalog.json');
const seconds = () => Number(process.hrtime.bigint()) / 1e9;
const text = (message) => `${JSON.stringify({ jsonrpc: '2.0', ...message })}\n`;

// A child process that is spoken to in lines.
class Child {
  constructor(command, ...options) {
    this.process = spawn(command, options, { env, stdio: ['pipe', 'pipe', 'ignore'] });
    this.gone = new Promise((done) => this.process.once('exit', done));
    this.process.stdout.on('data', (bytes) => {
      for (let at = bytes.indexOf(10); at >= 0; at = bytes.indexOf(10, at + 1)) --this.missing;
      this.received.push(bytes);
      if (this.missing <= 0) this.arrived?.();
    });
  }
  // Writes the text and waits for so many lines. Returns the bytes and the seconds that it took.
  async ask(request, lines = 1) {
    this.received = [];
    this.missing = lines;
    const start = seconds();
    const done = new Promise((resolve, reject) => {
      this.arrived = resolve;
      this.gone.then(() => reject(new Error(`${this.process.spawnfile} has ended`)));
    });
    this.process.stdin.write(request);
    await done;
    return { bytes: Buffer.concat(this.received), time: seconds() - start };
  }
  // Seconds of processor time of all threads so far.
  cpu() {
    const folder = `/proc/${this.process.pid}/task`;
    let sum = 0;
    for (const id of readdirSync(folder)) {
      sum += Number(readFileSync(join(folder, id, 'schedstat'), 'utf8').split(' ')[0]);
    }
    return sum / 1e9;
  }
  peakBytes() {
    return /VmHWM:\s*(\d+)/.exec(readFileSync(`/proc/${this.process.pid}/status`, 'utf8'))[1] * 1024;
  }
  async end() {
    this.process.stdin.end();
    await this.gone;
  }
}

const servers = {
  zorvik: () => new Child(join(bin, 'zorvik_mcp')),
  node: () => {
    const script = fileURLToPath(new URL('node_server.mjs', import.meta.url));
    return new Child(process.execPath, script, catalog);
  },
};
const hello = text({
  id: 0,
  method: 'initialize',
  params: {
    protocolVersion: '2025-11-25',
    capabilities: {},
    clientInfo: { name: 'bench', version: '1' },
  },
});
const worldInfo = { method: 'tools/call', params: { name: 'world_info', arguments: {} } };
const initialized = text({ method: 'notifications/initialized' });

async function open(name) {
  const start = seconds();
  const server = servers[name]();
  await server.ask(hello);
  const time = seconds() - start;
  server.process.stdin.write(initialized);
  return { server, time };
}
async function openEditor(program, ...options) {
  const editor = new Child(join(bin, program), ...options);
  await editor.ask('');
  return editor;
}

const results = {};
function note(server, figure, value) {
  ((results[figure] ??= {})[server] ??= []).push(value);
}

// Many requests at once, after some to warm up.
async function pipelined(name, server, figure, count, request) {
  const many = (some) =>
    Array.from({ length: some }, (_, id) => text({ id: id + 1, ...request })).join('');
  await server.ask(many(Math.ceil(count / 5)), Math.ceil(count / 5));
  const batch = many(count);
  const before = server.cpu();
  const { bytes, time } = await server.ask(batch, count);
  if (bytes.includes('"isError":true') || bytes.includes('"error":{"code"')) throw new Error(`${name} fails ${figure}`);
  note(name, `${figure}, time each`, time / count);
  note(name, `${figure}, CPU each`, (server.cpu() - before) / count);
}

// One request after the other, each sent when the one before is answered.
async function sequential(name, server, figure, count, request) {
  for (let id = 0; id < count / 5; ++id) await server.ask(text({ id, ...request }));
  const start = seconds();
  for (let id = 0; id < count; ++id) await server.ask(text({ id, ...request }));
  note(name, figure, (seconds() - start) / count);
}

async function starts(name, figure) {
  for (let turn = 0; turn < 5; ++turn) {
    const { server, time } = await open(name);
    note(name, figure, time);
    await server.end();
  }
}

async function usualSession(name) {
  await starts(name, 'start to initialize answer');
  const { server } = await open(name);
  await server.ask(text({ id: 1, method: 'tools/list' }));
  note(name, 'peak memory, tools listed', server.peakBytes());
  const before = server.cpu();
  await new Promise((done) => setTimeout(done, 3000));
  note(name, 'CPU while idle, per second', (server.cpu() - before) / 3);
  await pipelined(name, server, 'ping', name === 'node' ? 20000 : 100000, { method: 'ping' });
  await pipelined(name, server, 'tools/list', 100, { method: 'tools/list' });
  await pipelined(name, server, 'tools/call', 500, worldInfo);
  note(name, 'peak memory, whole session', server.peakBytes());
  await server.end();
}

async function sessionInMemory(name) {
  await starts(name, 'start, home in memory');
  const { server } = await open(name);
  await sequential(name, server, 'ping, one by one', 1000, { method: 'ping' });
  await sequential(name, server, 'tools/call, one by one', 500, worldInfo);
  await pipelined(name, server, 'tools/call, home in memory', 2000, worldInfo);
  await server.end();
}

async function longLine(name) {
  const { server } = await open(name);
  for (const mebibytes of [1, 16]) {
    const empty = text({ id: 1, method: 'ping', params: { _meta: { pad: '' } } });
    const pad = 'x'.repeat(mebibytes * 1048576 - empty.length + 1);
    const line = Buffer.from(empty.replace('"pad":""', `"pad":"${pad}"`));
    for (let turn = 0; turn < 4; ++turn) {
      const before = server.cpu();
      const { time } = await server.ask(line);
      if (turn === 0) continue;
      note(name, `line of ${mebibytes} MiB, time`, time);
      note(name, `line of ${mebibytes} MiB, CPU`, server.cpu() - before);
    }
  }
  await server.end();
}

async function largeImage(name) {
  const { server } = await open(name);
  const request = text({ id: 1, method: 'tools/call', params: { name: 'inspect_capture' } });
  for (let turn = 0; turn < 5; ++turn) {
    const { bytes, time } = await server.ask(request);
    if (bytes.length < imageSize) throw new Error(`${name} loses the image`);
    if (turn > 0) note(name, '12 MB image', time);
  }
  note(name, '12 MB image, peak memory', server.peakBytes());
  await server.end();
}

try {
  const { server } = await open('zorvik');
  const { bytes } = await server.ask(text({ id: 1, method: 'tools/list' }));
  writeFileSync(catalog, JSON.stringify(JSON.parse(bytes).result.tools));
  await server.end();
  for (let round = 0; round < Number(rounds); ++round) {
    for (const [folder, program, session] of [
      [homeInMemory, 'zorvik_sample_editor', sessionInMemory],
      [home, 'zorvik_sample_editor', usualSession],
      [home, 'zorvik_image_editor', largeImage],
    ]) {
      env.ZORVIK_MCP_HOME = folder;
      const editor = await openEditor(program);
      for (const name of Object.keys(servers)) await session(name);
      await editor.end();
    }
    for (const name of Object.keys(servers)) await longLine(name);
  }
  writeFileSync(out, JSON.stringify(results, null, 1));
} finally {
  for (const folder of [home, homeInMemory]) rmSync(folder, { recursive: true, force: true });
}
