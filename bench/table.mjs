// Prints the tables of docs/performance.md from what zorvik_bench and process.mjs measured:
//   node table.mjs MICRO.json PROCESS.json
import { readFileSync } from 'node:fs';

const [micro, whole] = process.argv.slice(2).map((file) => JSON.parse(readFileSync(file, 'utf8')));
const least = (values) => Math.min(...values);
const median = (values) => values.toSorted((a, b) => a - b)[values.length >> 1];
const short = (value) => (value >= 100 ? value.toFixed(0) : value.toPrecision(3).replace(/\.0+$/, ''));
const row = (...cells) => console.log(`| ${cells.join(' | ')} |`);
function head(title, ...cells) {
  console.log(`\n### ${title}\n`);
  row(...cells);
  row(...cells.map((_, at) => (at === 0 ? '---' : '--:')));
}
// A ratio with what became of its target.
const atLeast = (ratio, target) => `${short(ratio)} ${ratio >= target ? '✓' : `✗ (${target})`}`;
const atMost = (ratio, target) => `${short(ratio)} ${ratio <= target ? '✓' : `✗ (${target})`}`;

// The least processor time of all repetitions, in nanoseconds, and how many bytes a run has.
const runs = {};
for (const run of micro.benchmarks) {
  if (run.run_type === 'aggregate') continue;
  if (run.error_occurred) throw new Error(`${run.name}: ${run.error_message}`);
  (runs[run.run_name] ??= []).push(run);
}
const time = (name) => least(runs[name].map((run) => run.cpu_time));
const bytes = (name) => (runs[name][0].bytes_per_second * runs[name][0].cpu_time) / 1e9;
const perByte = (name) => time(name) / bytes(name);

const names = [...new Set(Object.keys(runs).filter((name) => name.startsWith('read/')))];
const documents = [...new Set(names.map((name) => name.split('/')[1]))];
const hostile = (document) => document.startsWith('hostile');
for (const way of ['read', 'write']) {
  head(`JSON, ${way === 'read' ? 'reading' : 'writing'}`, 'Document', 'KiB', 'MB/s',
    'against RapidJSON', 'against nlohmann', 'against simdjson');
  for (const document of documents) {
    const ours = `${way}/${document}/zorvik`;
    const against = (library) => time(`${way}/${document}/${library}`) / time(ours);
    row(document, short(bytes(ours) / 1024), short(1000 / perByte(ours)),
      ...(hostile(document)
        ? [short(against('rapidjson')), short(against('nlohmann'))]
        : [atLeast(against('rapidjson'), 0.95), atLeast(against('nlohmann'), 4)]),
      short(against('simdjson')));
  }
}

head('JSON, hostile documents: milliseconds for 16 MiB', 'Document', 'reading', 'writing');
for (const document of documents.filter(hostile)) {
  const sixteen = (way) => atMost((perByte(`${way}/${document}/zorvik`) * 2 ** 24) / 1e6, 1000);
  row(document, sixteen('read'), sixteen('write'));
}

head('Parts', 'Part', 'time', 'per second');
for (const name of Object.keys(runs)) {
  if (/^(read|write)\//.test(name)) continue;
  const nanoseconds = time(name);
  const rate = runs[name][0].bytes_per_second
    ? `${short(1000 / perByte(name))} MB`
    : short(1e9 / nanoseconds);
  row(name, `${short(nanoseconds / 1000)} µs`, rate);
}
const growth = (part) => 16 * (time(`${part}/16777216`) / time(`${part}/1048576`));

head('Whole process, against the Node server', 'Figure', 'zorvik_mcp', 'Node', 'ratio');
const figure = (name, server, pick = least) => pick(whole[name][server]);
function compare(name, unit, target) {
  const pick = unit === 'MB' ? median : least;
  const [ours, theirs] = ['zorvik', 'node'].map((server) => figure(name, server, pick));
  const [scale, digits] = { ms: [1e3, 'ms'], µs: [1e6, 'µs'], MB: [1e-6, 'MB'] }[unit];
  const ratio = theirs / ours;
  row(name, `${short(ours * scale)} ${digits}`, `${short(theirs * scale)} ${digits}`,
    target ? atLeast(ratio, target) : short(ratio));
}
compare('start to initialize answer', 'ms', 20);
compare('start, home in memory', 'ms', 20);
compare('peak memory, tools listed', 'MB', 15);
compare('peak memory, whole session', 'MB', 15);
compare('ping, time each', 'µs');
compare('ping, CPU each', 'µs', 10);
compare('tools/list, time each', 'µs');
compare('tools/list, CPU each', 'µs');
compare('tools/call, time each', 'µs');
compare('tools/call, CPU each', 'µs');
compare('tools/call, home in memory, time each', 'µs');
compare('tools/call, home in memory, CPU each', 'µs');
compare('ping, one by one', 'µs', 2);
compare('tools/call, one by one', 'µs', 0.8);
compare('12 MB image', 'ms');
compare('12 MB image, peak memory', 'MB');
for (const size of ['1 MiB', '16 MiB']) {
  for (const what of ['time', 'CPU']) compare(`line of ${size}, ${what}`, 'ms');
}
compare('CPU while idle, per second', 'ms');

head('Growth and size', 'Figure', 'zorvik_mcp', 'Node');
const times = (server, what) =>
  figure(`line of 16 MiB, ${what}`, server) / figure(`line of 1 MiB, ${what}`, server);
const share = (server) => figure('12 MB image, peak memory', server, median) / 12e6;
for (const what of ['CPU', 'time']) {
  row(`16 MiB line against a 1 MiB line, whole process, ${what}`,
    atMost(times('zorvik', what), 17), short(times('node', what)));
}
row('the same, TakeLines alone', atMost(growth('TakeLinesInPieces'), 17), '');
row('the same, StdioChannel alone', atMost(growth('ChannelInPieces'), 17), '');
row('peak memory of an image answer against its size', atMost(share('zorvik'), 5),
  short(share('node')));

// How far the repetitions of one figure lie apart tells how much to make of a ratio.
const spread = (values) => median(values) / least(values);
const spreads = Object.values(runs).map((some) => spread(some.map((run) => run.cpu_time)));
console.log(`\nNoise: the median repetition takes ${short(median(spreads))} times the best one in the`);
console.log(`middle case, and ${short(Math.max(...spreads))} times in the worst.`);
