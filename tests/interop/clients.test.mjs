// MCP clients that others wrote, on a live server and a live editor.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { Client as ClientV2 } from '@modelcontextprotocol/client';
import { StdioClientTransport as TransportV2 } from '@modelcontextprotocol/client/stdio';
import { Client as ClientV1 } from '@modelcontextprotocol/sdk/client/index.js';
import { StdioClientTransport as TransportV1 } from '@modelcontextprotocol/sdk/client/stdio.js';
import { environment, serverProgram, startEditor, temporaryHome } from './support.mjs';

const identity = { name: 'interop', version: '1.0' };
const negotiating = (mode) => ({ versionNegotiation: { mode } });
const clients = [
  { name: 'sdk 1.x', Client: ClientV1, Transport: TransportV1, options: {} },
  ...['legacy', 'auto', { pin: '2026-07-28' }].map((mode) => ({
    name: `client 2.x, ${mode.pin ?? mode}`,
    Client: ClientV2,
    Transport: TransportV2,
    options: negotiating(mode),
    modern: mode !== 'legacy',
  })),
];

async function connect({ Client, Transport, options }, home) {
  const client = new Client(identity, options);
  const transport = new Transport({
    command: serverProgram,
    env: environment(home),
    stderr: 'ignore',
  });
  await client.connect(transport);
  return client;
}

for (const kind of clients) {
  test(`a session with ${kind.name}`, async (t) => {
    const home = temporaryHome(t);
    await startEditor(t, home, 'interop-editor', 'never=world.summary');
    const client = await connect(kind, home);
    t.after(() => client.close());
    const call = (name, args = {}, options = undefined) =>
      kind.Client === ClientV1
        ? client.callTool({ name, arguments: args }, undefined, options)
        : client.callTool({ name, arguments: args }, options);

    await t.test('shakes hands', async () => {
      assert.equal(client.getServerVersion().name, 'zorvik-mcp');
      assert.match(client.getInstructions(), /^Servidor de autoria de mundos/);
      assert.deepEqual(client.getServerCapabilities().tools, { listChanged: false });
      if (kind.modern) {
        const { supportedVersions } = await client.discover();
        assert.deepEqual(supportedVersions, ['2026-07-28']);
      } else {
        await client.ping();
      }
    });
    await t.test('lists the tools', async () => {
      const { tools } = await client.listTools();
      assert.equal(tools.length, 71);
      assert.equal(tools[0].name, 'editor_list');
    });
    await t.test('reads the world', async () => {
      const list = await call('editor_list');
      assert.equal(list.structuredContent.editors[0].editor_id, 'interop-editor');
      const info = await call('world_info');
      assert.ok(!info.isError);
      assert.equal(typeof info.structuredContent.revision, 'number');
    });
    await t.test('gets tool errors as results', async () => {
      const refused = await call('objects_query', { limit: 0 });
      assert.equal(refused.isError, true);
      assert.deepEqual(refused.structuredContent.error.details, {
        field: 'limit',
        reason: 'deveria ser no minimo 1',
      });
      const unsupported = await call('roads_list');
      assert.equal(unsupported.structuredContent.error.code, 'unsupported');
    });
    await t.test('receives an image', async () => {
      const { content } = await call('inspect_capture', { width: 64, height: 64 });
      assert.deepEqual(content.map((block) => block.type), ['text', 'image']);
      assert.equal(content[1].mimeType, 'image/png');
    });
    await t.test('cancels a call', async () => {
      const abort = new AbortController();
      const cancelled = call('world_summary', {}, { signal: abort.signal });
      await call('world_info');
      abort.abort('changed my mind');
      await assert.rejects(cancelled);
      assert.ok(!(await call('world_info')).isError);
    });
  });
}
