// The session that every client plays, step by step: what is called, and what has to come back.
import assert from 'node:assert/strict';

const size = { width: 160, height: 90 };
const house = [
  { asset: 'zorvik_casa', name: 'Casa nova', ref: 'casa', x: 60, z: 40 },
  { asset: 'zorvik_porta', parent_ref: 'casa', x: 0, y: 0, z: 3 },
];
const capture = {
  tool: 'inspect_capture',
  args: size,
  check: (document, text) => checkPicture(text),
};

// `check` gets the tool's document, and as text all that came to the model. Before the first step the
// example editor's world is at revision 1 and its history is empty.
export const steps = [
  { tool: 'editor_list', check: ({ editors }) => assert.equal(editors[0].editor_id, 'vale') },
  { tool: 'world_info', check: ({ revision }) => assert.equal(revision, 1) },
  {
    tool: 'objects_create',
    args: { objects: house, label: 'Casa nova' },
    check: ({ created }) => assert.deepEqual(created.map(({ ref }) => ref), ['casa', undefined]),
  },
  {
    tool: 'objects_query',
    // The schema can't say that this is too much, so that no client refuses it by itself.
    args: { parent: 1e300 },
    check: ({ error: { details } }) => assert.ok(details.field === 'parent' && details.reason),
  },
  capture,
  {
    tool: 'history_revert',
    args: { transaction: 1 },
    check: ({ reverted }) => assert.equal(reverted.label, 'Casa nova'),
  },
  { tool: 'history_list', check: ({ transactions }) => assert.equal(transactions.length, 2) },
];

// For a client that keeps the pictures of tools from its model: the session goes by the picture's file,
// which the client opens with the tool `viewer` of its own, if it has one that sends pictures.
export function stepsWithout(viewer) {
  const check = (document, text, record) => assert.match((record.path = document.file), /\.png$/);
  const look = { tool: viewer, args: ({ path }) => ({ path }), check: capture.check, own: true };
  const instead = [{ ...capture, check }, ...(viewer ? [look] : [])];
  return steps.flatMap((step) => (step === capture ? instead : [step]));
}

// The picture as it is, not a word about it: the first bytes of a PNG with the size asked for.
function checkPicture(text) {
  const bytes = Buffer.from(/iVBORw0KGgo[\w+/]{32}/.exec(text)?.[0] ?? '', 'base64');
  assert.equal(bytes.toString('latin1', 12, 16), 'IHDR', 'no picture came');
  assert.deepEqual([bytes.readInt32BE(16), bytes.readInt32BE(20)], [size.width, size.height]);
}

// The tool's document, wherever in the client's rendering of the result it is.
function findDocument(value) {
  if (typeof value === 'string') {
    const begin = value.indexOf('{"ok":');
    for (let end = begin; begin >= 0 && (end = value.indexOf('}', end) + 1) > 0; ) {
      try {
        return JSON.parse(value.slice(begin, end));
      } catch {} // A brace within the document.
    }
    return undefined;
  }
  for (const part of typeof value === 'object' ? Object.values(value ?? {}) : []) {
    const found = findDocument(part);
    if (found) return found;
  }
  return undefined;
}

export function nextCall(record) {
  const { tool, args = {} } = record.steps[record.results];
  return { tool, args: typeof args === 'function' ? args(record) : args };
}

// Takes the result of the next step, and notes in the record what is wrong with it and, at the end,
// whom the editor's history names as the author.
export function checkResult(record, result, text) {
  const { tool, check, own } = record.steps[record.results++];
  if (!own) ++record.calls;
  try {
    const document = findDocument(result);
    check(document, text, record);
    record.author = document?.transactions?.at(-1).client ?? record.author;
  } catch (error) {
    record.problems.push(`${tool}: ${error.message}\n${JSON.stringify(result)?.slice(0, 600)}`);
  }
}
