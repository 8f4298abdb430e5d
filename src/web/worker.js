'use strict';

// ---- One run of murlreport, in a worker of its own ----
//
// The page sends one message with what to convert and gets back messages about progress, and one that has all that
// came of it. The worker then stays, for the zip. Files live in memory: /scripts has what the page sent.

const scriptsFolder = '/scripts';
const memoryFolder = '.murlreport';
const noMemory = 'murlreport: std::bad_alloc'; // what the program says then
const readAtOnce = 64; // files that are asked for before one has come
let made = null; // after the run: what the zip holds, by path

const inMemoryFolder = (path) => path.split('/').slice(0, -1).includes(memoryFolder);

function bytesOfBase64(text) {
  const raw = atob(text);
  const bytes = new Uint8Array(raw.length);
  for (let i = 0; i < raw.length; i++) bytes[i] = raw.charCodeAt(i);
  return bytes;
}

// Collects what the program writes to a stream, byte by byte, as lines.
function lineCollector(lines) {
  const decoder = new TextDecoder();
  let line = [];
  return (byte) => {
    if (byte === null) return;
    if (byte !== 10) {
      line.push(byte);
      return;
    }
    lines.push(decoder.decode(new Uint8Array(line)));
    line = [];
  };
}

// A file that is only written, from its beginning to its end: the program's own would be copied each time it grows.
// Returns what has been written, as the parts of a blob.
function outputFile(fs, path, minor) {
  const blocks = [];
  let used = 0; // of the last block
  const write = (stream, from, offset, length) => {
    if (blocks.length === 0 || used + length > blocks[blocks.length - 1].length) {
      if (blocks.length > 0) blocks.push(blocks.pop().subarray(0, used));
      blocks.push(new Uint8Array(Math.max(1 << 20, length)));
      used = 0;
    }
    blocks[blocks.length - 1].set(from.subarray(offset, offset + length), used);
    used += length;
    return length;
  };
  const device = fs.makedev(64, minor);
  fs.registerDevice(device, { write });
  fs.mkdev(path, 0o666, device);
  return () => (blocks.length === 0 ? [] : [...blocks.slice(0, -1), blocks[blocks.length - 1].subarray(0, used)]);
}

// Posts how much of the scripts was opened so far: the program opens one after the other. A single one tells nothing.
function watchProgress(fs, sizes) {
  const total = [...sizes.values()].reduce((sum, size) => sum + size + 1, 0);
  const open = fs.open;
  let before = 0; // of those that the program is through with
  let current = 0;
  let shown = 0;
  fs.open = (path, ...rest) => {
    const whole = typeof path === 'string' ? fs.analyzePath(path).path : undefined;
    const size = sizes.get(whole);
    if (size !== undefined) {
      sizes.delete(whole);
      before += current;
      current = size + 1;
      if (Date.now() - shown > 50) {
        shown = Date.now();
        postMessage({ progress: before / total });
      }
    }
    return open(path, ...rest);
  };
}

async function bytesOfFile({ path, file }) {
  try {
    return new Uint8Array(await file.arrayBuffer());
  } catch (error) {
    throw new Error(path + ' can’t be read, so nothing was converted (' + error.message + ')');
  }
}

function placeFile(fs, { path, file }, bytes) {
  const whole = scriptsFolder + '/' + path;
  fs.mkdirTree(whole.slice(0, whole.lastIndexOf('/')));
  fs.writeFile(whole, bytes, { canOwn: true });
  fs.utime(whole, file.lastModified, file.lastModified);
  const { node } = fs.lookupPath(whole);
  return { node, time: node.timestamp };
}

// Copies the page's files into memory. Returns what each is there.
async function placeFiles(fs, files) {
  const placed = new Map();
  for (let first = 0; first < files.length; first += readAtOnce) {
    const some = files.slice(first, first + readAtOnce);
    const texts = await Promise.all(some.map(bytesOfFile));
    some.forEach((one, i) => placed.set(one.path, placeFile(fs, one, texts[i])));
  }
  return placed;
}

// All files under /scripts.
function filesIn(fs, folder, found) {
  for (const name of fs.readdir(scriptsFolder + '/' + folder)) {
    if (name === '.' || name === '..') continue;
    const path = folder + name;
    if (fs.isDir(fs.stat(scriptsFolder + '/' + path).mode)) filesIn(fs, path + '/', found);
    else found.push(path);
  }
  return found;
}

// What the run has written and removed, outputs before memories: the order in which it is safe to stop.
function changesOf(fs, placed) {
  const there = filesIn(fs, '', []);
  const isNew = (path) => {
    const before = placed.get(path);
    const { node } = fs.lookupPath(scriptsFolder + '/' + path);
    return before === undefined || before.node !== node || before.time !== node.timestamp;
  };
  const rank = (path) => (!inMemoryFolder(path) ? 0 : path.endsWith('.csv') ? 2 : 1);
  return {
    written: there.filter(isNew).sort((a, b) => rank(a) - rank(b) || (a < b ? -1 : 1)),
    removed: [...placed.keys()].filter((path) => !there.includes(path)),
  };
}

// The totals at a report's end; null if it is cut off. The rest may have many megabytes. No text in it has these quotes.
async function totalsOf(json) {
  const end = await json.slice(-1000000).text();
  const at = end.lastIndexOf('"totals":');
  try {
    return at < 0 ? null : JSON.parse('{' + end.slice(at)).totals;
  } catch (error) {
    return null;
  }
}

async function run({ wasm, files, paths, options, ticks }) {
  const notes = [];
  const program = await murlreport({
    wasmBinary: bytesOfBase64(wasm),
    stdin: () => null,
    stdout: lineCollector([]),
    stderr: lineCollector(notes),
  });
  const fs = program.FS;
  const html = outputFile(fs, '/dev/report.html', 0);
  const json = outputFile(fs, '/dev/report.json', 1);
  fs.mkdirTree(scriptsFolder);
  fs.chdir(scriptsFolder);
  const placed = await placeFiles(fs, files);
  watchProgress(fs, new Map(files.map(({ path, file }) => [scriptsFolder + '/' + path, file.size])));
  if (ticks) fs.writeFile('/ticks.csv', new Uint8Array(await ticks.arrayBuffer()));
  const accept = ticks ? ['--accept-from', '/ticks.csv'] : [];
  const status = program.callMain([...options, ...accept, '--quiet', '--html', '/dev/report.html', '--json', '/dev/report.json', '--', ...paths]);
  const result = { status, notes, written: [], removed: [], html: new Blob(html(), { type: 'text/html' }), json: new Blob(json()), totals: null };
  if (result.json.size > 0) result.totals = await totalsOf(result.json);
  if (notes.includes(noMemory)) throw new RangeError(noMemory);
  if (result.json.size === 0) return result; // without a report, nothing that the run has left is whole
  if (result.totals === null) throw new Error('The converter stopped, so nothing was converted: ' + notes.join('; '));
  made = new Map([['report.html', result.html]]);
  const changes = changesOf(fs, placed);
  result.removed = changes.removed;
  for (const path of changes.written) {
    const blob = new Blob([fs.readFile(scriptsFolder + '/' + path)]);
    made.set(path, blob);
    result.written.push({ path, blob });
  }
  return result;
}

// A trap ends the run, and what it had written by then is nobody's. Want of memory is a RangeError, from the browser
// too; so is a stack of JavaScript that overflows.
function troubleOf(error) {
  const text = String((error && error.message) || error);
  if (error instanceof RangeError && !/stack/.test(text)) return 'The scripts take more memory than the page has, so nothing was converted. Convert fewer at once. (' + text + ')';
  if (error instanceof WebAssembly.RuntimeError || error instanceof RangeError) return 'The converter broke off, so nothing was converted. Please report this, with the script. (' + text + ')';
  return text;
}

// Names are UTF-8, and the zip says so. Some tools believe it only of a zip from Unix, which has permission bits.
async function zipBlob() {
  const entries = {};
  for (const [path, blob] of made) entries[path] = [new Uint8Array(await blob.arrayBuffer()), { os: 3, attrs: 0o100644 << 16 }];
  return new Blob([fflate.zipSync(entries)], { type: 'application/zip' });
}

onmessage = async ({ data }) => {
  try {
    if (data.zip) postMessage({ zip: await zipBlob() });
    else postMessage({ result: await run(data) });
  } catch (error) {
    postMessage({ trouble: troubleOf(error) });
  }
};
