// The server that zorvik_mcp is measured against: what one would write with the npm SDK to offer the
// same catalog and forward calls to the same editors. It checks no arguments, has no deadlines and
// asks the registry only once, all of which is in its favour.
//   node node_server.mjs CATALOG.json
import { existsSync, readFileSync, readdirSync } from 'node:fs';
import { connect } from 'node:net';
import { join } from 'node:path';
import { createInterface } from 'node:readline';
import { Server } from '../tests/interop/node_modules/@modelcontextprotocol/sdk/dist/esm/server/index.js';
import { StdioServerTransport } from '../tests/interop/node_modules/@modelcontextprotocol/sdk/dist/esm/server/stdio.js';
import {
  CallToolRequestSchema,
  ListToolsRequestSchema,
} from '../tests/interop/node_modules/@modelcontextprotocol/sdk/dist/esm/types.js';

const tools = JSON.parse(readFileSync(process.argv[2], 'utf8'));
// The names on the bridge: the first underscore stands for the point.
const operation = (tool) => tool.replace('_', '.');

// As the server finds it, but for the look at who owns the session's folder.
function privateFolder() {
  const session = `/run/user/${process.geteuid()}`;
  return existsSync(session) ? `${session}/zorvik` : `/tmp/zorvik-${process.geteuid()}`;
}

let editor;
function openEditor() {
  const folder = join(process.env.ZORVIK_MCP_HOME, 'editors');
  const file = readdirSync(folder).find((name) => name.endsWith('.json'));
  const record = JSON.parse(readFileSync(join(folder, file), 'utf8'));
  const waiting = new Map();
  const socket = connect(`${privateFolder()}/${record.pipe}.sock`);
  let last = 0;
  const send = (message) =>
    socket.write(`${JSON.stringify({ token: record.token, ...message })}\n`);
  send({ id: 0, op: 'hello', bridge: record.bridge });
  createInterface({ input: socket }).on('line', (line) => {
    const reply = JSON.parse(line);
    waiting.get(reply.id)?.(reply);
    waiting.delete(reply.id);
  });
  return (op, args) =>
    new Promise((done) => {
      waiting.set(++last, done);
      send({ id: last, op, args, client: 'bench', deadline_ms: 120000 });
    });
}

const server = new Server({ name: 'node', version: '1' }, { capabilities: { tools: {} } });
server.setRequestHandler(ListToolsRequestSchema, () => ({ tools }));
server.setRequestHandler(CallToolRequestSchema, async ({ params }) => {
  editor ??= openEditor();
  const reply = await editor(operation(params.name), params.arguments ?? {});
  const { images = [], ...rest } = reply.result ?? {};
  const blocks = images.map(({ data_base64: data, mime: mimeType }) => {
    return { type: 'image', data, mimeType };
  });
  const document = { ok: reply.ok, revision: reply.revision, error: reply.error, ...rest };
  return {
    content: [{ type: 'text', text: JSON.stringify(document) }, ...blocks],
    structuredContent: document,
    isError: !reply.ok,
  };
});
process.stdin.on('end', () => process.exit());
const options = { maxBufferSize: 64 * 1048576 };  // Its own limit is below 16 MiB.
await server.connect(new StdioServerTransport(process.stdin, process.stdout, options));
