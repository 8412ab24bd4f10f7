// What the interop tests share: the programs under test, an editor to talk to, and a home for both.
import assert from 'node:assert/strict';
import { spawn } from 'node:child_process';
import { mkdtempSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { createInterface } from 'node:readline';
import { fileURLToPath } from 'node:url';

const bin = fileURLToPath(new URL('../../build/release/bin', import.meta.url));
export const serverProgram = join(bin, 'zorvik_mcp');
const editorProgram = join(bin, 'zorvik_faulty_editor');

// A home folder of its own for each test, removed when the test ends.
export function temporaryHome(t) {
  const home = mkdtempSync(join(tmpdir(), 'zorvik-home-'));
  // Programs that clients leave behind may still write there.
  t.after(() => rmSync(home, { recursive: true, force: true, maxRetries: 9, retryDelay: 300 }));
  return home;
}

export function environment(home) {
  return { ...process.env, ZORVIK_MCP_HOME: home };
}

// A program whose output comes line by line.
function start(program, args, home) {
  const child = spawn(program, args, { env: environment(home), stdio: ['pipe', 'pipe', 'ignore'] });
  const lines = createInterface({ input: child.stdout })[Symbol.asyncIterator]();
  return { child, line: async () => (await lines.next()).value };
}

// An editor that is ready to be found, with the faults that are wanted; it ends with the test.
export async function startEditor(t, home, id, ...faults) {
  const { child, line } = start(editorProgram, ['--id', id, ...faults], home);
  const gone = new Promise((done) => child.once('exit', done));
  t.after(() => child.stdin.end() && gone);
  assert.equal(await line(), `pronto ${id}`);
}

// A server that is spoken to without any client library.
export function startRawServer(t, home) {
  const { child, line } = start(serverProgram, [], home);
  t.after(() => child.kill());
  return {
    async ask(message) {
      child.stdin.write(`${JSON.stringify({ jsonrpc: '2.0', ...message })}\n`);
      return JSON.parse(await line());
    },
  };
}
