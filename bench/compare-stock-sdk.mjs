// Decoding and splitting the recorded 500-symbol Tencent answer: stock-sdk's own functions in
// Node.js against our decode and parse (the Recorded500 benchmark), side by side.
//
//   node bench/compare-stock-sdk.mjs [build folder]    (scripts/bench runs it)

import { execFileSync } from 'node:child_process';
import { readFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import path from 'node:path';
import { fileURLToPath, pathToFileURL } from 'node:url';

const root = path.resolve(path.dirname(fileURLToPath(import.meta.url)), '..');
const build = path.resolve(process.argv[2] ?? path.join(root, 'build'));
const bridge = path.join(build, 'share/tidemark/bridge');
const sdkPath = createRequire(path.join(bridge, 'package.json')).resolve('stock-sdk');
const { decodeGBK, parseResponse } = await import(pathToFileURL(sdkPath).href);

const bytes = readFileSync(path.join(root, 'tests/data/tencent-500.gbk'));
const body = bytes.buffer.slice(bytes.byteOffset, bytes.byteOffset + bytes.byteLength);
const once = () => parseResponse(decodeGBK(body));
if (once().length !== 500) throw new Error('stock-sdk did not read 500 rows');

// Warm up, then time batches until two seconds have passed.
for (let i = 0; i < 50; i++) once();
let runs = 0;
const start = process.hrtime.bigint();
let elapsed = 0n;
while (elapsed < 2_000_000_000n) {
  for (let i = 0; i < 20; i++) once();
  runs += 20;
  elapsed = process.hrtime.bigint() - start;
}
const sdkMicros = Number(elapsed) / runs / 1000;

const report = JSON.parse(execFileSync(path.join(build, 'bench/feed_bench'), [
  '--benchmark_filter=^Recorded500$', '--benchmark_format=json', '--benchmark_min_time=2',
], { encoding: 'utf8' }));
const ours = report.benchmarks.find((b) => b.name === 'Recorded500');
const oursMicros = ours.real_time / (ours.time_unit === 'ns' ? 1000 : 1);

const ratio = sdkMicros / oursMicros;
console.log(`body: ${bytes.length} bytes, 500 symbols`);
console.log(`stock-sdk decodeGBK + parseResponse (Node.js ${process.version}): ${sdkMicros.toFixed(1)} µs`);
console.log(`tidemark decodeLiveText + parseTencent:                   ${oursMicros.toFixed(1)} µs`);
console.log(`ratio: ${ratio.toFixed(1)}× (budget: at least 10×) ${ratio >= 10 ? 'PASS' : 'FAIL'}`);
process.exitCode = ratio >= 10 ? 0 : 1;
