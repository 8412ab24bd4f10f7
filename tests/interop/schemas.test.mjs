// The catalog's schemas, read by a JSON Schema validator that others wrote: it accepts each of them,
// and comes to the same verdict as the server on arguments near every limit.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { Ajv2020 } from 'ajv/dist/2020.js';
import { startRawServer, temporaryHome } from './support.mjs';

const ajv = new Ajv2020({ strict: true, strictRequired: true });

// A small value that fits the schema: required fields only, everything at its lower limit.
function fitting(schema) {
  switch (schema.type) {
    case 'object':
      return Object.fromEntries(
        (schema.required ?? []).map((name) => [name, fitting(schema.properties[name])]),
      );
    case 'array':
      return Array(schema.minItems ?? 0).fill(fitting(schema.items));
    case 'string':
      return schema.enum?.[0] ?? 'é'.repeat(schema.minLength ?? 1);
    case 'boolean':
      return true;
    default:
      return schema.minimum ?? Math.min(0, schema.maximum ?? 0);
  }
}

// Values on both sides of every limit that the node itself states, and values of other kinds.
function nearLimits(schema) {
  const near = (limits, steps) =>
    limits.filter((limit) => limit !== undefined).flatMap((limit) => steps.map((step) => limit + step));
  const counts = (...limits) => near(limits, [-1, 0, 1]).filter((count) => count >= 0);
  return [
    ...[null, 'x', 1.5, -1, true, [], {}, 9007199254740992],
    // The server takes no number beyond 2^53 for an integer; a schema can't say that.
    ...(schema.type === 'integer' ? [] : [1e300]),
    ...near([schema.minimum, schema.maximum], [0, -1, 1, -0.001, 0.001]),
    ...counts(schema.minLength, schema.maxLength).map((count) => 'ç'.repeat(count)),
    ...counts(schema.minItems, schema.maxItems).map((count) => Array(count).fill(fitting(schema.items))),
    ...(schema.enum ?? []),
  ];
}

// Documents that differ from a fitting one in a single place, for every place of the schema.
function* variations(schema) {
  yield* nearLimits(schema);
  const base = fitting(schema);
  if (schema.type === 'object') {
    yield { ...base, unknown: 1 };
    for (const name of Object.keys(base)) {
      const { [name]: left, ...rest } = base;
      yield rest;
    }
    for (const [name, field] of Object.entries(schema.properties)) {
      for (const value of variations(field)) yield { ...base, [name]: value };
    }
  } else if (schema.type === 'array') {
    const rest = base.slice(1);
    for (const value of variations(schema.items)) yield [...rest, value];
  }
}

test('every schema is accepted, and both validators agree', { timeout: 300_000 }, async (t) => {
  const server = startRawServer(t, temporaryHome(t));
  await server.ask({ id: 0, method: 'initialize', params: { protocolVersion: '2025-11-25' } });
  const { result } = await server.ask({ id: 0, method: 'tools/list' });
  let accepted = 0;
  let refused = 0;
  for (const tool of result.tools) {
    ajv.compile(tool.outputSchema);
    const agrees = ajv.compile(tool.inputSchema);
    // Arguments of null are the same as none for the server, and a list of arguments is refused
    // before the schema is asked.
    const documents = [...variations(tool.inputSchema)].filter(
      (args) => args !== null && typeof args === 'object' && !Array.isArray(args),
    );
    // All at once: the server answers refusals, and calls without an editor, in their order.
    const answers = await Promise.all(
      documents.map((args) =>
        server.ask({ id: 1, method: 'tools/call', params: { name: tool.name, arguments: args } }),
      ),
    );
    answers.forEach(({ result: { structuredContent: { error } } }, index) => {
      const valid = error?.code !== 'invalid_argument';
      valid ? ++accepted : ++refused;
      const args = documents[index];
      assert.equal(valid, agrees(args), `${tool.name} ${JSON.stringify(args)}: ${error?.message}`);
    });
  }
  // So that an empty generator can't pass for agreement.
  assert.ok(accepted > 1000 && refused > 5000, `${accepted} accepted, ${refused} refused`);
  t.diagnostic(`${accepted} accepted, ${refused} refused by both`);
});
