// Tidemark's bridge to the stock-sdk package. It prints one JSON answer on standard output:
//
//   node stock-sdk-bridge.mjs --quotes '["600519","00700","NVDA"]'   → [{id, name, price, ...}]
//   node stock-sdk-bridge.mjs --health                              → exit 0 when the package works
//   node stock-sdk-bridge.mjs --timeline '{"id":"600519","market":"A股"}' → {"values": [...]}
//   node stock-sdk-bridge.mjs --kline '{"id":"600519","period":"day"}' → {"bars": [{date, open, ...}]}
//   node stock-sdk-bridge.mjs --search 茅台                          → the --quotes answer for
//                                                                     the stocks, funds and
//                                                                     indices found
//
// The endpoint set comes as JSON in STOCK_DATA_SOURCE_CONFIG; its stockSDKTencentBase is the
// package's base address. A base other than Tencent's own is taken as a mirror of all Tencent
// hosts, so the intraday and search requests go there too.
//
// Every download is bounded: a body past MAX_BODY_BYTES or a request past FETCH_TIME_LIMIT_MS
// fails like any other network error, so a server that never stops sending costs the process
// a few megabytes, not all the memory it can get.

import { StockSDK, decodeGBK, parseResponse } from 'stock-sdk';

const MAX_BODY_BYTES = 8 << 20;  // as much as the application's own client takes
const FETCH_TIME_LIMIT_MS = 10000;

class ResponseTooLarge extends Error {
  constructor(url) {
    super(`the answer of ${url} passed ${MAX_BODY_BYTES} bytes`);
    this.name = 'ResponseTooLarge';
    // The package retries network errors; this one would only come again.
    this.sdkCode = 'RESPONSE_TOO_LARGE';
  }
}

const unboundedFetch = globalThis.fetch;

// AbortSignal.any came with Node.js 20.3; package.json allows 18.
function eitherSignal(a, b) {
  if (typeof AbortSignal.any === 'function') return AbortSignal.any([a, b]);
  const both = new AbortController();
  for (const signal of [a, b]) {
    if (signal.aborted) both.abort(signal.reason);
    else signal.addEventListener('abort', () => both.abort(signal.reason), { once: true });
  }
  return both.signal;
}

// fetch with the body read here, as a stream, up to the cap: the caller gets a response whose
// body is already in memory and bounded. Node's own fetch would hold a body of any length.
async function boundedFetch(input, init = {}) {
  const limit = AbortSignal.timeout(FETCH_TIME_LIMIT_MS);
  const signal = init.signal ? eitherSignal(init.signal, limit) : limit;
  const response = await unboundedFetch(input, { ...init, signal });
  const url = response.url || String(input?.url ?? input);
  if (Number(response.headers.get('content-length')) > MAX_BODY_BYTES) {
    await response.body?.cancel().catch(() => {});
    throw new ResponseTooLarge(url);
  }
  const chunks = [];
  let size = 0;
  if (response.body) {
    const reader = response.body.getReader();
    for (;;) {
      const { done, value } = await reader.read();
      if (done) break;
      size += value.byteLength;
      if (size > MAX_BODY_BYTES) {
        await reader.cancel().catch(() => {});
        throw new ResponseTooLarge(url);
      }
      chunks.push(value);
    }
  }
  const body = size > 0 ? Buffer.concat(chunks, size) : null;
  const bounded = new Response(body, {
    status: response.status,
    statusText: response.statusText,
    headers: response.headers,
  });
  Object.defineProperty(bounded, 'url', { value: url });
  return bounded;
}

// The package's helpers that call the global fetch themselves get the bounded one too.
globalThis.fetch = boundedFetch;

const TENCENT_BASE = 'https://qt.gtimg.cn';
const TENCENT_HOSTS = /^https:\/\/(web\.ifzq|ifzq|qt|smartbox)\.gtimg\.cn/;

function tencentBase() {
  try {
    const config = JSON.parse(process.env.STOCK_DATA_SOURCE_CONFIG ?? '{}');
    const base = config?.stockSDKTencentBase;
    if (typeof base === 'string' && base.length > 0) return base.replace(/\/+$/, '');
  } catch {
    // An unreadable set: the package's own address.
  }
  return TENCENT_BASE;
}

function makeSDK() {
  const base = tencentBase();
  const mirror = base === TENCENT_BASE ? null : base;
  const fetchImpl = (url, init) =>
    boundedFetch(mirror ? String(url).replace(TENCENT_HOSTS, mirror) : url, init);
  return new StockSDK({ baseUrl: base, timeout: 8000, retry: { maxRetries: 1 }, fetchImpl });
}

const isDigits = (s) => /^[0-9]+$/.test(s);

// Indices carry their exchange's prefix ("sh000001" 上证指数, "hkHSI", "usIXIC"), so that a bare
// "000001" stays 平安银行.
const INDEX_SYMBOL = /^(?:(sh|sz|bj)([0-9]{6})|(hk|us)([A-Z]{2,8}))$/;
const INDEX_LABELS = { sh: 'A股指数', sz: 'A股指数', bj: 'A股指数', hk: '港股指数', us: '美股指数' };

// Which of the package's quote calls serves a watchlist symbol, the code it is asked by, the
// market label it gets, and the group it is asked in. The package answers an A-share index by
// its six digits alone, the same as the stock of those digits on the other exchange, so each
// exchange's indices are asked apart from everything else.
function route(symbol) {
  const index = INDEX_SYMBOL.exec(symbol);
  if (index) {
    const prefix = index[1] ?? index[3];
    const call = index[1] ? 'cn' : prefix;
    return { call, group: 'index:' + prefix, ask: index[1] ? symbol : index[4],
             code: index[2] ?? index[4], market: INDEX_LABELS[prefix] };
  }
  const plain = (call, market) => ({ call, group: call, ask: symbol, code: symbol, market });
  if (isDigits(symbol) && symbol.length === 6) {
    if (/^(01|02)/.test(symbol)) return plain('fund', 'A股基金');
    if (/^(5|15|16)/.test(symbol)) return plain('cn', 'A股基金');
    return plain('cn', 'A股');
  }
  if (isDigits(symbol) && symbol.length === 5) return plain('hk', '港股');
  return plain('us', '美股');
}

// The package's code for the wanted one, as it answers it ("NVDA.OQ" for "NVDA", ".IXIC" or
// "IXIC" for the Nasdaq, "000001" for "sh000001").
function matches(wanted, code) {
  const a = String(code ?? '').toUpperCase().replace(/^\./, '');
  const b = wanted.toUpperCase();
  return a === b || a.startsWith(b + '.');
}

function isoTime(timestamp) {
  return Number.isFinite(timestamp) ? new Date(timestamp).toISOString() : undefined;
}

function toRecord(symbol, market, q) {
  if (q.nav !== undefined) {
    // A fund's net value: today's value against yesterday's.
    const price = Number(q.nav);
    return { id: symbol, market, name: q.name, price, prevClose: price - Number(q.change ?? 0),
             updatedAt: isoTime(q.timestamp), source: 'stock-sdk' };
  }
  return { id: symbol, market, name: q.name, price: q.price, prevClose: q.prevClose,
           high: q.high, low: q.low, volume: Math.trunc(Number(q.volume) || 0),
           updatedAt: isoTime(q.timestamp), source: 'stock-sdk' };
}

async function quotes(symbols) {
  const sdk = makeSDK();
  const groups = new Map();
  for (const symbol of symbols) {
    const routed = route(symbol);
    if (!groups.has(routed.group)) groups.set(routed.group, []);
    groups.get(routed.group).push({ symbol, ...routed });
  }
  const records = [];
  await Promise.all([...groups.values()].map(async (wanted) => {
    const call = wanted[0].call;
    let answers;
    try {
      answers = await sdk.quotes[call](wanted.map((w) => w.ask));
    } catch (error) {
      process.stderr.write(`${call}: ${error?.message ?? error}\n`);
      return;
    }
    const unused = [...answers];
    for (const { symbol, code, market } of wanted) {
      const index = unused.findIndex((q) => matches(code, q?.code));
      if (index >= 0) records.push(toRecord(symbol, market, unused.splice(index, 1)[0]));
    }
  }));
  const order = new Map(symbols.map((s, i) => [s, i]));
  records.sort((a, b) => order.get(a.id) - order.get(b.id));
  return records;
}

// The package loads, builds its client and decodes the feeds' GBK text, without the network.
function health() {
  const sdk = new StockSDK({ baseUrl: tencentBase() });
  if (typeof sdk.quotes?.cn !== 'function' || typeof sdk.quotes?.timeline !== 'function') return false;
  const text = decodeGBK(new Uint8Array([0xc3, 0xa9, 0xcc, 0xa8]).buffer);  // 茅台
  const rows = parseResponse('v_sh600519="1~' + text + '~600519~1.00";');
  return rows.length === 1 && rows[0].key === 'sh600519' && rows[0].fields[1] === '茅台';
}

function tencentCode(id, market) {
  if (INDEX_SYMBOL.test(id)) return id;  // an index is its own code
  if (market === '港股' || market === '港股基金') return 'hk' + id;
  if (market === '美股' || market === '美股基金') return 'us' + id.toUpperCase();
  if (/^[65]/.test(id)) return 'sh' + id;
  if (/^[489]/.test(id)) return 'bj' + id;
  return 'sz' + id;
}

async function timeline(request) {
  const answer = await makeSDK().quotes.timeline(tencentCode(String(request.id), request.market));
  return { values: (answer?.data ?? []).map((point) => point.price) };
}

const KLINE_PERIODS = { day: 'daily', week: 'weekly', month: 'monthly' };
const KLINE_COUNT = 160;

// The package's day, week or month candles, forward-adjusted, the last KLINE_COUNT of them.
async function kline(request) {
  const target = route(String(request.id));
  if (target.call === 'fund') fail('off-exchange funds have no candles');
  const api = makeSDK().kline;
  const name = target.call === 'hk' || target.call === 'us' ? target.call : 'cn';
  const rows = await api[name](target.ask, { period: KLINE_PERIODS[request.period] ?? 'daily' });
  const bars = (rows ?? [])
    .map(({ date, open, high, low, close, volume }) => ({ date, open, high, low, close, volume: volume ?? 0 }))
    .filter((b) => typeof b.date === 'string' && [b.open, b.high, b.low, b.close].every(Number.isFinite));
  return { bars: bars.slice(-KLINE_COUNT) };
}

const SEARCH_MARKETS = new Set(['sh', 'sz', 'bj', 'hk', 'us']);
const SEARCH_LIMIT = 12;

// The watchlist symbol of a search hit: the package answers the market's prefix with the code
// ("sh600519", "hk00700", "usnvda.oq"); US codes carry an exchange suffix the feeds do not want.
// An index keeps its exchange's prefix ("sh000001", "hkHSI", "usIXIC").
function searchSymbol(hit) {
  const market = String(hit?.market ?? '').toLowerCase();
  if (!SEARCH_MARKETS.has(market)) return null;
  if (hit.category !== 'stock' && hit.category !== 'fund' && hit.category !== 'index') return null;
  let code = String(hit.code ?? '').toLowerCase();
  if (code.startsWith(market)) code = code.slice(market.length);
  if (hit.category === 'index') {
    const symbol = market === 'hk' || market === 'us'
      ? market + code.replace(/^\./, '').toUpperCase() : market + code;
    return INDEX_SYMBOL.test(symbol) ? symbol : null;
  }
  if (market === 'us') {
    const ticker = code.toUpperCase().replace(/\.(OQ|N|AM|PS|OB|PK)$/, '');
    return /^[A-Z]{1,5}([.-][A-Z]{1,2})?$/.test(ticker) ? ticker : null;
  }
  const digits = market === 'hk' ? 5 : 6;
  return isDigits(code) && code.length === digits ? code : null;
}

// The search knows a fund when it finds one; the quote calls tell Hong Kong and US funds from
// shares by nothing, so the hit's own kind gives the label.
const FUND_LABELS = { sh: 'A股基金', sz: 'A股基金', bj: 'A股基金', hk: '港股基金', us: '美股基金' };

async function search(text) {
  const hits = await makeSDK().search(text);
  const funds = new Map();
  for (const hit of hits) {
    const symbol = searchSymbol(hit);
    if (symbol && hit.category === 'fund') funds.set(symbol, FUND_LABELS[String(hit.market).toLowerCase()]);
  }
  const symbols = [...new Set(hits.map(searchSymbol).filter(Boolean))].slice(0, SEARCH_LIMIT);
  const records = await quotes(symbols);
  // Hits without a single quote mean the quote feed failed, not that nothing matched.
  if (symbols.length > 0 && records.length === 0) fail('no quotes for the search hits');
  return records.map((r) => (funds.has(r.id) ? { ...r, market: funds.get(r.id) } : r));
}

function fail(message) {
  process.stderr.write(message + '\n');
  process.exit(1);
}

const [mode, argument] = process.argv.slice(2);
try {
  if (mode === '--health') {
    process.exit(health() ? 0 : 1);
  } else if (mode === '--quotes') {
    const symbols = JSON.parse(argument ?? '[]');
    if (!Array.isArray(symbols) || !symbols.every((s) => typeof s === 'string'))
      fail('--quotes takes a JSON array of symbols');
    process.stdout.write(JSON.stringify(await quotes(symbols)) + '\n');
  } else if (mode === '--timeline') {
    const request = JSON.parse(argument ?? '{}');
    if (typeof request?.id !== 'string') fail('--timeline takes {"id", "market"}');
    process.stdout.write(JSON.stringify(await timeline(request)) + '\n');
  } else if (mode === '--kline') {
    const request = JSON.parse(argument ?? '{}');
    if (typeof request?.id !== 'string') fail('--kline takes {"id", "period"}');
    process.stdout.write(JSON.stringify(await kline(request)) + '\n');
  } else if (mode === '--search') {
    if (!argument?.trim()) fail('--search takes the text to look up');
    process.stdout.write(JSON.stringify(await search(argument.trim())) + '\n');
  } else {
    fail('usage: stock-sdk-bridge.mjs --quotes JSON | --health | --timeline JSON | --kline JSON | --search TEXT');
  }
} catch (error) {
  fail(String(error?.message ?? error));
}
