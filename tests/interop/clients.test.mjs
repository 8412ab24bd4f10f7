// MCP clients that others wrote, on a live server and a live editor.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { inflateSync } from 'node:zlib';
import { Client as ClientV2 } from '@modelcontextprotocol/client';
import { StdioClientTransport as TransportV2 } from '@modelcontextprotocol/client/stdio';
import { Client as ClientV1 } from '@modelcontextprotocol/sdk/client/index.js';
import { StdioClientTransport as TransportV1 } from '@modelcontextprotocol/sdk/client/stdio.js';
import { environment, serverProgram, startEditor, temporaryHome } from './support.mjs';

const clients = [
  { name: 'sdk 1.x', Client: ClientV1, Transport: TransportV1, options: {} },
  ...['legacy', 'auto', { pin: '2026-07-28' }].map((mode) => ({
    name: `client 2.x, ${mode.pin ?? mode}`,
    Client: ClientV2,
    Transport: TransportV2,
    options: { versionNegotiation: { mode } },
    modern: mode !== 'legacy',
  })),
];

for (const { name, Client, Transport, options, modern } of clients) {
  test(`a session with ${name}`, async (t) => {
    const home = temporaryHome(t);
    await startEditor(t, home, 'vale', 'never=world.summary');
    const client = new Client({ name: 'interop', version: '1.0' }, options);
    await client.connect(
      new Transport({ command: serverProgram, env: environment(home), stderr: 'ignore' }),
    );
    t.after(() => client.close());
    // The old one takes a schema of results before the options.
    const call = (tool, args = {}, ...rest) =>
      client.callTool({ name: tool, arguments: args }, ...(Client === ClientV1 ? [undefined] : []), ...rest);

    assert.equal(client.getServerVersion().name, 'zorvik-mcp');
    assert.match(client.getInstructions(), /^Servidor de autoria de mundos/);
    assert.deepEqual(client.getServerCapabilities().tools, { listChanged: false });
    if (modern) assert.deepEqual((await client.discover()).supportedVersions, ['2026-07-28']);
    else await client.ping();
    assert.equal((await client.listTools()).tools.length, 71);

    // The client holds results against the schemas of the list.
    assert.equal((await call('editor_list')).structuredContent.editors[0].editor_id, 'vale');
    const refused = await call('objects_query', { limit: 0 });
    assert.ok(refused.isError);
    assert.equal(refused.structuredContent.error.details.field, 'limit');
    const { content } = await call('inspect_capture', { width: 64, height: 64 });
    assert.deepEqual(content.map(({ type }) => type), ['text', 'image']);
    // A picture's only block of pixels lies between its header and its end.
    const png = Buffer.from(content[1].data, 'base64');
    const pixels = inflateSync(png.subarray(41, png.length - 16));
    assert.equal(pixels.length, 64 * (1 + 3 * 64));
    assert.ok(new Set(pixels).size > 30, 'more than an even surface');

    const abort = new AbortController();
    const cancelled = call('world_summary', {}, { signal: abort.signal });
    await call('world_info');
    abort.abort('changed my mind');
    await assert.rejects(cancelled);
    assert.ok(!(await call('world_info')).isError);
  });
}
