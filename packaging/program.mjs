// Asks a server that was just built, or unpacked, what it is and which tools it has.
import { spawnSync } from 'node:child_process';
import { mkdtempSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';

export function describe(program) {
  const home = mkdtempSync(join(tmpdir(), 'zorvik-package-'));
  const params = {
    protocolVersion: '2025-11-25',
    capabilities: {},
    clientInfo: { name: 'package', version: '1' },
  };
  const requests = [
    { jsonrpc: '2.0', id: 1, method: 'initialize', params },
    { jsonrpc: '2.0', id: 2, method: 'tools/list' },
  ];
  const { stdout, error } = spawnSync(program, {
    input: requests.map((request) => `${JSON.stringify(request)}\n`).join(''),
    env: { ZORVIK_MCP_HOME: home },
    maxBuffer: 1 << 24,
  });
  rmSync(home, { recursive: true, force: true });
  if (error) throw error;
  const [introduction, list] = `${stdout}`.trimEnd().split('\n').map((line) => JSON.parse(line).result);
  return {
    version: introduction.serverInfo.version,
    tools: list.tools.map(({ name, title }) => ({ name, description: title })),
  };
}
