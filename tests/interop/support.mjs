// What the interop tests share: the programs under test, an editor to talk to, and a home for both.
import { spawn } from 'node:child_process';
import { mkdtempSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { dirname, join, resolve } from 'node:path';
import { createInterface } from 'node:readline';
import { fileURLToPath } from 'node:url';

const here = dirname(fileURLToPath(import.meta.url));
const bin = resolve(process.env.ZORVIK_BIN ?? join(here, '..', '..', 'build', 'release', 'bin'));
export const serverProgram = join(bin, 'zorvik_mcp');
const editorProgram = join(bin, 'zorvik_faulty_editor');

// A home folder of its own for each test, removed when the test ends.
export function temporaryHome(t) {
  const home = mkdtempSync(join(tmpdir(), 'zorvik-interop-'));
  t.after(() => rmSync(home, { recursive: true, force: true }));
  return home;
}

export function environment(home) {
  return { ...process.env, ZORVIK_MCP_HOME: home };
}

// An editor that is ready to be found, with the faults that are wanted; it ends with the test.
export async function startEditor(t, home, id, ...faults) {
  const editor = spawn(editorProgram, ['--id', id, ...faults], {
    env: environment(home),
    stdio: ['pipe', 'pipe', 'inherit'],
  });
  const gone = new Promise((done) => editor.once('exit', done));
  t.after(async () => {
    editor.stdin.end();
    await gone;
  });
  const lines = createInterface({ input: editor.stdout })[Symbol.asyncIterator]();
  const { value } = await lines.next();
  if (!value?.startsWith('pronto ')) throw new Error(`the editor said ${value}`);
}

// A server that is spoken to without any client library.
export function startRawServer(t, home) {
  const server = spawn(serverProgram, [], {
    env: environment(home),
    stdio: ['pipe', 'pipe', 'ignore'],
  });
  t.after(() => server.kill());
  const lines = createInterface({ input: server.stdout })[Symbol.asyncIterator]();
  return {
    async ask(message) {
      server.stdin.write(`${JSON.stringify({ jsonrpc: '2.0', ...message })}\n`);
      return JSON.parse((await lines.next()).value);
    },
  };
}
