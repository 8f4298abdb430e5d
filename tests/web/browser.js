// The page that converts, in a real browser: folders and scripts go in, zips and folders come out, and nothing else does.
//   node browser.js PAGE FOLDER    FOLDER/in has what is converted; FOLDER/out gets a zip and a JSON of each, and
//                                  what was written into folders; FOLDER/look gets screenshots
// Needs playwright-core, and a Chromium that CHROMIUM names. What came out is compared by tools/check_web.sh.
'use strict';

const assert = require('node:assert/strict');
const fs = require('node:fs');
const http = require('node:http');
const path = require('node:path');
const { pathToFileURL } = require('node:url');
const { chromium } = require('playwright-core');

const [pagePath, folder] = process.argv.slice(2);
const input = (...names) => path.join(folder, 'in', ...names);
const output = (name) => path.join(folder, 'out', name);
const troubles = [];
const patience = 900000; // ms for any wait: the machine may be busy

// A page that notes every error and every request but that for itself and what it has made.
async function openPage(context, url) {
  const page = await context.newPage();
  page.on('console', (message) => { if (message.type() === 'error') troubles.push('console: ' + message.text()); });
  page.on('pageerror', (error) => troubles.push('error: ' + error.message));
  page.on('request', (request) => { if (request.url() !== url && !/^(blob|data):/.test(request.url())) troubles.push('request: ' + request.url()); });
  page.on('worker', (worker) => worker.on('console', (message) => { if (message.type() === 'error') troubles.push('worker: ' + message.text()); }));
  await page.goto(url);
  return page;
}

const wholePage = (context) => openPage(context, pathToFileURL(pagePath).href);

// Waits for a run to end. Returns the verdict.
async function outcome(page) {
  await page.waitForSelector('#outcome:not([hidden])');
  return page.textContent('#verdict');
}

async function saveZip(page, name) {
  const [download] = await Promise.all([page.waitForEvent('download'), page.click('#zip')]);
  await download.saveAs(output(name + '.zip'));
  fs.writeFileSync(output(name + '.json'), await page.evaluate(() => job.result.json.text()));
}

async function startOver(page) {
  await page.click('#other');
  await page.waitForSelector('#start:not([hidden])');
}

async function pick(page, field, what) {
  await page.setInputFiles(field, what);
  return outcome(page);
}

// Drops files and folders of this machine, as a hand would; and again as long as nothing begins, since a busy browser
// can lose the events.
async function drop(page, paths) {
  const session = await page.context().newCDPSession(page);
  const at = { x: 300, y: 300, data: { items: [], files: paths, dragOperationsMask: 1 } };
  for (let again = 5, begun = false; !begun; again--) {
    for (const type of ['dragEnter', 'dragOver', 'drop']) await session.send('Input.dispatchDragEvent', { type, ...at });
    begun = await page.waitForSelector('#start', { state: 'hidden', timeout: 60000 }).then(() => true, (error) => {
      if (again === 0) throw error;
    });
  }
  return outcome(page);
}

// ---- From a file ----

async function convertsFolders(page) {
  for (const name of ['tree', 'golden', 'limits']) {
    assert.match(await pick(page, '#folder-field', input(name)), /script/);
    await saveZip(page, name);
    await startOver(page);
  }
}

async function convertsWhatIsDropped(page) {
  const names = ['tree/dims/plate.mrl', 'tree/outline/loop.mrl'];
  assert.match(await drop(page, names.map((name) => input(name))), /^2 scripts/);
  await saveZip(page, 'scripts');
  await startOver(page);
  await drop(page, [input('tree')]);
  assert.ok(await page.isVisible('#write'), 'a folder that was dropped can be written to');
  assert.match(await page.textContent('#notes'), /tree: a browser hides names/);
  await saveZip(page, 'dropped');
  await startOver(page);
  assert.match(await drop(page, [pagePath]), /no \*\.mrl/);
  assert.match(await page.textContent('#notes'), /neither/);
  await startOver(page);
  assert.match(await pick(page, '#folder-field', input('names')), /^1 script/);
  assert.match(await page.textContent('#notes'), /can’t deliver this name/);
  await startOver(page);
}

// A folder's handle may hide names that its entry lists. Chromium lists none for a page from a file, so both are made here.
async function namesWhatIsHidden(page) {
  await page.evaluate(() => {
    const names = ['seen.mrl', 'hid<den.mrl', 'hid<den.txt'];
    const seen = { kind: 'file', name: names[0], getFile: async () => new File(['EXIT\n'], names[0]) };
    const handle = { kind: 'directory', name: 'tree', async* values() { yield seen; yield { kind: 'file', name: '' }; } };
    const batches = [names.map((name) => ({ isFile: true, fullPath: '/tree/' + name })), []];
    const entry = { isDirectory: true, fullPath: '/tree', createReader: () => ({ readEntries: (resolve) => resolve(batches.shift()) }) };
    start(() => gatherDrop({ items: [{ kind: 'file', getAsFileSystemHandle: async () => handle, webkitGetAsEntry: () => entry, getAsFile: () => null }] }));
  });
  assert.match(await outcome(page), /^1 script/);
  assert.deepEqual(await page.locator('#notes li').allTextContents(),
    ['tree/…: the browser can’t deliver a name in this folder', 'tree/hid<den.mrl: the browser hides this name']);
  assert.equal(await page.getAttribute('#verdict', 'class'), 'bad');
  await startOver(page);
}

// The report is the same page as everywhere, and works where it is shown.
async function showsTheReport(page) {
  await pick(page, '#folder-field', input('tree'));
  const report = page.frameLocator('#report');
  await report.locator('#matrix tbody tr').first().waitFor();
  assert.ok(await report.locator('#matrix tbody tr').count() > 10);
  await startOver(page);
}

// Seconds of CPU time that the browser's processes have used.
async function cpuSeconds(page) {
  const session = await page.context().browser().newBrowserCDPSession();
  const { processInfo } = await session.send('SystemInfo.getProcessInfo');
  await session.detach();
  return processInfo.reduce((sum, one) => sum + one.cpuTime, 0);
}

// CPU times, since other work on the machine makes the rest longer. The page itself must do little: it has the buttons.
async function isQuick(page) {
  const start = await cpuSeconds(page);
  assert.match(await pick(page, '#folder-field', input('many')), /^1000 scripts/);
  const many = await cpuSeconds(page) - start;
  await startOver(page);
  const session = await page.context().newCDPSession(page);
  await session.send('Performance.enable', { timeDomain: 'threadTicks' });
  const busy = async () => (await session.send('Performance.getMetrics')).metrics.find(({ name }) => name === 'TaskDuration').value;
  const before = await busy();
  assert.match(await pick(page, '#files-field', input('large', 'large.mrl')), /^1 script/);
  const own = await busy() - before;
  await startOver(page);
  console.log('web: 1,000 scripts take ' + many.toFixed(1) + ' s of CPU time; 50 MB take ' + own.toFixed(2) + ' s of it in the page itself');
  assert.ok(many > 0.1 && many < 60, 'CPU time of 1,000 scripts');
  assert.ok(own > 0 && own < 2, 'CPU time of the page with 50 MB');
}

// Puts other text into the worker, which must have what it replaces.
async function changeWorker(page, before, after) {
  await page.evaluate(([from, to]) => {
    if (!$('worker').textContent.includes(from)) throw new Error('the worker has no ' + from);
    $('worker').textContent = $('worker').textContent.replaceAll(from, to);
  }, [before, after]);
}

// Memory that runs out, a trap and a program that is damaged are messages, and the page goes on.
async function staysUpright(context) {
  const page = await wholePage(context);
  await changeWorker(page, '2147483648', '50331648'); // the greatest memory
  await pick(page, '#files-field', input('large', 'large.mrl'));
  assert.match(await page.textContent('#verdict'), /more memory than the page has/);
  assert.equal(await page.getAttribute('#verdict', 'class'), 'bad');
  assert.ok(!(await page.isVisible('#zip')));
  await startOver(page);
  const trap = [0, 97, 115, 109, 1, 0, 0, 0, 1, 4, 1, 96, 0, 0, 3, 2, 1, 0, 7, 5, 1, 1, 102, 0, 0, 10, 5, 1, 3, 0, 0, 11];
  const run = 'program.callMain([';
  await changeWorker(page, run, 'new WebAssembly.Instance(new WebAssembly.Module(new Uint8Array([' + trap + ']))).exports.f(); ' + run);
  await pick(page, '#files-field', input('tree/dims/plate.mrl'));
  assert.match(await page.textContent('#verdict'), /converter broke off/);
  assert.ok(!(await page.isVisible('#zip')));
  await startOver(page);
  await page.evaluate(() => { $('wasm').textContent = $('wasm').textContent.slice(0, 1000); });
  await pick(page, '#files-field', input('tree/dims/plate.mrl'));
  assert.equal(await page.getAttribute('#verdict', 'class'), 'bad');
  assert.ok(!(await page.isVisible('#zip')));
  await page.close();
}

async function looks(page) {
  const shot = async (name) => {
    for (const theme of ['light', 'dark'])
      for (const width of [1280, 390]) {
        await page.setViewportSize({ width, height: 900 });
        await page.emulateMedia({ colorScheme: theme });
        for (const frame of page.frames().filter((one) => one.url() !== 'about:blank')) {
          await frame.waitForSelector('html[data-theme=' + theme + ']');
          await frame.waitForFunction((most) => innerWidth <= most && innerWidth > most - 50, width);
          await frame.evaluate(() => new Promise((resolve) => { requestAnimationFrame(() => requestAnimationFrame(resolve)); }));
        }
        await page.screenshot({ path: path.join(folder, 'look', name + '_' + theme + '_' + width + '.png') });
        assert.ok(await page.evaluate(() => document.documentElement.scrollWidth <= innerWidth), name + ': nothing sticks out at ' + width);
      }
  };
  await shot('start');
  for (const options of await page.locator('#start summary').all()) await options.click();
  await shot('options');
  for (const options of await page.locator('#start summary').all()) await options.click();
  await pick(page, '#folder-field', input('tree'));
  await page.frameLocator('#report').locator('#matrix tbody tr').first().waitFor();
  await shot('outcome');
  await page.emulateMedia({ colorScheme: null });
  for (const theme of ['light', 'dark']) {
    while (await page.textContent('#theme') !== 'Theme: ' + theme) await page.click('#theme');
    await page.frameLocator('#report').locator('html[data-theme=' + theme + ']').waitFor();
  }
  await startOver(page);
  await page.setViewportSize({ width: 1280, height: 900 });
}

async function worksByKeyboard(page) {
  const reached = new Set();
  for (let i = 0; i < 12; i++) {
    await page.keyboard.press('Tab');
    reached.add(await page.evaluate(() => document.activeElement.id || document.activeElement.tagName));
  }
  for (const id of ['theme', 'pick-folder', 'pick-files', 'SUMMARY']) assert.ok(reached.has(id), id + ' is reached by Tab');
}

// ---- Into a folder ----

// A folder of this machine as the browser's own, which the page gets where it would get one that was picked.
async function fillFolder(page, from) {
  const files = fs.readdirSync(from, { recursive: true, withFileTypes: true }).filter((entry) => entry.isFile())
    .map((entry) => path.join(entry.parentPath || entry.path, entry.name))
    .map((file) => [path.relative(from, file), fs.readFileSync(file).toString('base64')]);
  await page.evaluate(async (all) => {
    const root = await (await navigator.storage.getDirectory()).getDirectoryHandle('tree', { create: true });
    window.showDirectoryPicker = async () => root;
    for (const [name, base64] of all) {
      const names = name.split('/');
      let at = root;
      for (const part of names.slice(0, -1)) at = await at.getDirectoryHandle(part, { create: true });
      const stream = await (await at.getFileHandle(names.at(-1), { create: true })).createWritable();
      await stream.write(Uint8Array.from(atob(base64), (c) => c.charCodeAt(0)));
      await stream.close();
    }
  }, files);
}

async function emptyFolderInto(page, to) {
  const files = await page.evaluate(async () => {
    const all = [];
    const walk = async (at, where) => {
      for await (const child of at.values()) {
        if (child.kind === 'directory') await walk(child, where + child.name + '/');
        else all.push([where + child.name, [...new Uint8Array(await (await child.getFile()).arrayBuffer())]]);
      }
    };
    await walk(await window.showDirectoryPicker(), '');
    return all;
  });
  for (const [name, bytes] of files) {
    fs.mkdirSync(path.dirname(path.join(to, name)), { recursive: true });
    fs.writeFileSync(path.join(to, name), Buffer.from(bytes));
  }
}

async function write(page) {
  await page.click('#write');
  await page.waitForFunction(() => /^Wrote/.test($('done').textContent));
  return page.textContent('#done');
}

// Converts a folder in place; then scripts and outputs have changed as FOLDER/in/edited has them, and once more.
async function writesIntoAFolder(context) {
  const server = http.createServer((request, response) => {
    response.setHeader('Content-Type', 'text/html');
    fs.createReadStream(pagePath).pipe(response);
  });
  await new Promise((resolve) => { server.listen(0, 'localhost', resolve); });
  const page = await openPage(context, 'http://localhost:' + server.address().port + '/');
  await fillFolder(page, input('tree'));
  await page.click('#pick-folder');
  await outcome(page);
  assert.match(await write(page), /^Wrote (\d+) of \1 files/);
  await emptyFolderInto(page, output('written'));

  await fillFolder(page, input('edited'));
  await page.click('#again');
  await outcome(page);
  await fillFolder(page, input('late'));
  assert.match(await write(page), /^Wrote 0 of .*changed meanwhile/, 'what has changed since is not written over');
  await page.click('#again');
  await outcome(page);
  assert.match(await write(page), /^Wrote (\d+) of \1 file/);
  await emptyFolderInto(page, output('rewritten'));
  await page.close();
  server.close();
}

async function main() {
  const browser = await chromium.launch({
    executablePath: process.env.CHROMIUM, timeout: patience, args: ['--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run',
      '--disable-background-networking', '--disable-component-update', '--disable-sync'],
  });
  const context = await browser.newContext({ viewport: { width: 1280, height: 900 }, acceptDownloads: true });
  context.setDefaultTimeout(patience);
  const page = await wholePage(context);
  for (const test of [worksByKeyboard, convertsFolders, convertsWhatIsDropped, namesWhatIsHidden, showsTheReport, looks, isQuick]) {
    await test(page);
    console.log('web: ' + test.name);
  }
  for (const test of [writesIntoAFolder, staysUpright]) {
    await test(context);
    console.log('web: ' + test.name);
  }
  await browser.close();
  assert.deepEqual(troubles, []);
  console.log('web: no error, no request');
}

main().catch((error) => { console.error(error, troubles); process.exit(1); });
