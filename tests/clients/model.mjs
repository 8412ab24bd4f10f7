// A stand-in for a model on the loopback address. It speaks the interfaces that the clients speak, and
// instead of thinking it calls the tools of the session, one in each answer.
import { createServer } from 'node:http';
import { json } from 'node:stream/consumers';
import { checkResult, nextCall } from './session.mjs';

const farewell = 'The session is over.';
const id = (n) => `call_${n}`;

// How each interface offers tools and brings their results, and the events that call a tool or say
// the farewell. Each request holds the whole conversation.
const interfaces = {
  messages: {
    path: /\/v1\/messages$/,
    tools: ({ tools = [] }) => tools.map(({ name }) => name),
    results: ({ messages }) =>
      messages.flatMap(({ content }) =>
        Array.isArray(content) ? content.filter(({ type }) => type === 'tool_result') : [],
      ),
    *answer(n, name, args) {
      const usage = { input_tokens: 1, output_tokens: 1 };
      const [block, delta, stop_reason] = name
        ? [
            { type: 'tool_use', id: id(n), name, input: {} },
            { type: 'input_json_delta', partial_json: JSON.stringify(args) },
            'tool_use',
          ]
        : [{ type: 'text', text: '' }, { type: 'text_delta', text: farewell }, 'end_turn'];
      const message = { id: `msg_${n}`, type: 'message', role: 'assistant', model: 'stand-in' };
      yield { type: 'message_start', message: { ...message, content: [], usage } };
      yield { type: 'content_block_start', index: 0, content_block: block };
      yield { type: 'content_block_delta', index: 0, delta };
      yield { type: 'content_block_stop', index: 0 };
      yield { type: 'message_delta', delta: { stop_reason, stop_sequence: null }, usage };
      yield { type: 'message_stop' };
    },
  },
  responses: {
    path: /\/v1\/responses$/,
    tools: ({ tools = [] }) =>
      tools.flatMap((tool) =>
        tool.type === 'namespace' ? tool.tools.map(({ name }) => `${tool.name}/${name}`) : tool.name,
      ),
    results: ({ input }) => input.filter(({ type }) => type === 'function_call_output'),
    *answer(n, tool, args) {
      const [name, namespace] = tool?.split('/').reverse() ?? [];
      const item = tool
        ? { type: 'function_call', call_id: id(n), namespace, name, arguments: JSON.stringify(args) }
        : {
            type: 'message',
            role: 'assistant',
            content: [{ type: 'output_text', text: farewell }],
          };
      const usage = { input_tokens: 1, output_tokens: 1, total_tokens: 2 };
      const response = { id: `resp_${n}` };
      yield { type: 'response.created', response };
      yield { type: 'response.output_item.done', output_index: 0, item };
      yield { type: 'response.completed', response: { ...response, output: [item], usage } };
    },
  },
  gemini: {
    path: /:(streamG|g)enerateContent$/,
    tools: ({ tools = [] }) =>
      tools.flatMap(({ functionDeclarations = [] }) => functionDeclarations.map(({ name }) => name)),
    results: ({ contents }) =>
      contents.flatMap(({ parts }) => parts).filter(({ functionResponse }) => functionResponse),
    *answer(n, name, args) {
      const part = name ? { functionCall: { id: id(n), name, args } } : { text: farewell };
      const content = { role: 'model', parts: [part] };
      yield { candidates: [{ index: 0, content, finishReason: 'STOP' }] };
    },
  },
};

function respond(body, kind, record) {
  const names = kind.tools(body).filter(Boolean);
  const offered = names.filter((name) => name.includes('zorvik'));
  // Clients also ask for titles and the like, without any tools.
  if (!offered.length) return kind.answer(0);
  record.tools = offered.length;
  const text = JSON.stringify(body);
  for (const result of kind.results(body).slice(record.results)) checkResult(record, result, text);
  const n = record.results;
  if (n >= record.steps.length) return kind.answer(n);
  const { tool, args } = nextCall(record);
  const name = names.find((one) => one === tool) ?? offered.find((one) => one.endsWith(tool));
  if (!name) throw new Error(`${tool} is not offered`);
  return kind.answer(n, name, args);
}

// Serves until `close`; what the clients did, and whether it was right, is in `record`.
export async function startModel(record) {
  const server = createServer(async (request, response) => {
    const path = request.url.split('?')[0];
    const kind = Object.values(interfaces).find((one) => one.path.test(path));
    if (!kind) return response.writeHead(404).end('{}');
    try {
      const body = await json(request);
      const events = [...respond(body, kind, record)];
      if (path.endsWith(':generateContent')) return response.end(JSON.stringify(events[0]));
      response.writeHead(200, { 'content-type': 'text/event-stream' });
      for (const event of events) {
        if (event.type) response.write(`event: ${event.type}\n`);
        response.write(`data: ${JSON.stringify(event)}\n\n`);
      }
      response.end();
    } catch (error) {
      record.problems.push(error.message);
      response.writeHead(400).end(JSON.stringify({ error: { message: error.message } }));
    }
  });
  await new Promise((ready) => server.listen(0, '127.0.0.1', ready));
  return {
    address: `http://127.0.0.1:${server.address().port}`,
    close: () => server.close() && server.closeAllConnections(),
  };
}
