// The page in a real browser: sorts, filters, opens, ticks, saves, remembers; asks no network and reports no error.
//   node browser.js PAGE MANY LARGE FOLDER    PAGE is of tests/report/tree and a hostile script, MANY of 500 scripts,
//                                             LARGE of one script with 10,000 lines and 5,000 items; screenshots and
//                                             pages that are made here go to FOLDER
// Needs playwright-core, and a Chromium that CHROMIUM names.
'use strict';

const assert = require('node:assert/strict');
const fs = require('node:fs');
const { pathToFileURL } = require('node:url');
const { chromium } = require('playwright-core');

const [pagePath, manyPath, largePath, folder] = process.argv.slice(2);
const troubles = [];

// A page that notes every error and every request but that for its own file.
async function openPage(context, path, address = '') {
  const page = await context.newPage();
  page.on('console', (message) => { if (message.type() === 'error') troubles.push('console: ' + message.text()); });
  page.on('pageerror', (error) => troubles.push('error: ' + error.message));
  page.on('request', (request) => { if (!/^(data:|file:|blob:)/.test(request.url())) troubles.push('request: ' + request.url()); });
  await page.goto(pathToFileURL(path).href + address);
  await page.waitForSelector('#list .block');
  return page;
}

const texts = (page, selector) => page.$$eval(selector, (elements) => elements.filter((e) => e.offsetParent !== null).map((e) => e.textContent));
const sorted = (list, compare) => [...list].sort(compare);
const statement = (text) => `#list .item:has(code:text-is(${JSON.stringify(text)}))`;

// What the list holds, near the window or not.
const rowsOf = (page) => page.evaluate(() => list.entries.filter((entry) => entry.row).map(({ row }) => row.file.path + ':' + row.line));

// The page with its data changed: change is called with each script, its body, and its rows of accepted.csv.
function pageWith(name, change) {
  const data = { script: [], body: [], accept: [] };
  const element = /<script type="application\/json" class="(script|body|accept)">(.*?)<\/script>/g;
  const html = fs.readFileSync(pagePath, 'utf8');
  for (const [, kind, text] of html.matchAll(element)) data[kind].push(JSON.parse(text));
  data.script.forEach((script, i) => change(script, data.body[i], data.accept[i]));
  const next = { script: 0, body: 0, accept: 0 };
  const path = folder + '/' + name + '.html';
  fs.writeFileSync(path, html.replace(element, (all, kind) =>
    '<script type="application/json" class="' + kind + '">' + JSON.stringify(data[kind][next[kind]++]).replaceAll('<', '\\u003c') + '</script>'));
  return path;
}

async function sorts(page) {
  const counts = () => page.$$eval('#matrix tbody tr', (rows) => rows.map((row) => Number((row.querySelector('td[data-kind="arguments failed"] b') || { textContent: '0' }).textContent)));
  const direction = (sort) => page.$eval('#matrix [data-sort=' + sort + ']', (button) => button.parentElement.getAttribute('aria-sort'));
  await page.click('#matrix [data-sort=broken]');
  const down = await counts();
  assert.deepEqual(down, sorted(down, (a, b) => b - a), 'sorted by broken, most first');
  assert.ok(down[0] > down[down.length - 1]);
  assert.equal(await direction('broken'), 'descending');
  await page.click('#matrix [data-sort=broken]');
  assert.deepEqual(await counts(), sorted(down, (a, b) => a - b));
  assert.equal(await direction('broken'), 'ascending');
  await page.click('#matrix [data-sort=file]');
  const names = await texts(page, '#matrix tbody th a');
  assert.deepEqual(names, sorted(names, (a, b) => a.localeCompare(b)), 'sorted by name');
  assert.equal(await page.$$eval('#matrix [aria-sort]', (heads) => heads.length), 1);
  await page.click('#gravest');
  assert.ok((await texts(page, '#matrix tbody td[data-output]')).length === names.length, 'each file has the state of its output');
}

async function filters(page) {
  const all = (await rowsOf(page)).length;
  await page.click('#kinds [data-kind=frozen]');
  await page.click('#open-all');
  const rows = await page.$$eval('#list .item', (items) => items.map((item) => [...item.querySelectorAll('.line-head .kind')].map((chip) => chip.textContent)));
  assert.ok(rows.length > 0 && rows.every((kinds) => kinds.includes('value fixed')));
  await page.selectOption('#command', 'POLYGON');
  const statements = await texts(page, '#list .item .line-head code');
  assert.ok(statements.length > 0 && statements.every((text) => /^POLYGON/i.test(text)));
  const before = await rowsOf(page);
  await page.reload();
  await page.waitForSelector('#list .block');
  assert.deepEqual(await page.evaluate(() => [...view.kinds].length + view.command), '1POLYGON', 'filters live in the address');
  await page.click('#open-all');
  assert.deepEqual(await rowsOf(page), before);
  await page.click('#clear');
  await page.fill('#text', 'menu.mrl:1');
  assert.deepEqual(await rowsOf(page), [], 'line 1 is not line 15');
  for (const [text, count] of [['polygons.mrl:9', 1], ['no such text anywhere', 0], ['If Guards Another', 6]]) {
    await page.fill('#text', text);
    await page.click('#open-all');
    assert.equal(new Set(await rowsOf(page)).size, count, text);
  }
  await page.click('#clear');
  await page.click('#close-all');
  assert.equal((await rowsOf(page)).length, 0, 'everything is closed');
  await page.evaluate(() => { groupsOpen.clear(); showList(false); });
  assert.equal((await rowsOf(page)).length, all);
}

// A script's name and text are text, whatever they spell.
async function opensTheHostileFile(page) {
  await page.click('#matrix tbody a:has-text("onerror")');
  await page.click('#open-all');
  assert.equal(await page.$('#list img, #file-head img'), null);
  const old = await page.textContent('#list .side.old');
  assert.ok(old.includes('</script><b>bold</b>'), 'the string is shown as it stands');
  assert.ok(old.includes('\u00e9'), 'Latin-1 is shown');
  assert.equal(await page.$('#list b:text-is("bold")'), null);
  await page.click('#close-all');
  await page.keyboard.press('Escape');
  await page.waitForSelector('#overview:not([hidden])');
}

async function opensARowInPlace(page) {
  await page.fill('#text', 'polygons.mrl:9');
  await page.click('#open-all');
  await page.click('#close-all');
  await page.click('#list .toggle');
  const row = '#list .item:has(code:text-matches("^VPOLYGON"))';
  assert.deepEqual(await texts(page, row + ' .line-head .kind'), ['value fixed', 'argument lost', 'look at it'], 'one row for a statement, its kinds as labels');
  assert.equal(await page.$$eval(row + ' .tick', (boxes) => boxes.length), 1, 'and one tick');
  await page.click(row + ' .what');
  assert.ok((await texts(page, row + ' .old .text')).some((text) => text.startsWith('VPOLYGON')), 'the old line');
  assert.equal((await texts(page, row + ' figcaption'))[0], 'Script, line 9');
  assert.match((await texts(page, row + ' .right figcaption'))[0], /^(Output|What would be written)/);
  assert.ok((await page.textContent(row + ' .guide')).length > 40, 'the guide is in it');
  await page.click(row + ' .toggle');
  assert.equal(await page.$(row + ' .old'), null);
  await page.click('#clear');
}

// j, k, n and p go through what is shown in its order; Esc goes back to where one was.
async function keysFollowWhatIsShown(page) {
  await page.click('#open-all');
  const order = await page.evaluate(() => list.entries.filter(isStop).map((entry) => (entry.row ? entry.row.file.path + ':' + entry.row.line : entry.group.key)));
  const cursor = () => page.evaluate(() => (at.row ? at.row.file.path + ':' + at.row.line : at.group.key));
  await page.evaluate(() => setAt(null));
  for (const place of order) {
    await page.keyboard.press('j');
    assert.equal(await cursor(), place);
  }
  await page.keyboard.press('k');
  assert.equal(await cursor(), order[order.length - 2]);
  const box = await page.$eval('#list .at', (element) => element.getBoundingClientRect().top);
  assert.ok(box >= 0 && box < 900, 'what the cursor is at is in the window: ' + box);
  await page.waitForTimeout(200);
  const place = await cursor();
  const names = await texts(page, '#matrix tbody th a');
  for (const name of names) {
    await page.keyboard.press('n');
    assert.equal(await page.textContent('#file-head h2'), name);
  }
  await page.keyboard.press('n');
  await page.keyboard.press('p');
  assert.equal(await page.textContent('#file-head h2'), names[names.length - 2]);
  await page.keyboard.press('j');
  await page.keyboard.press('Escape');
  await page.waitForTimeout(200);
  assert.equal(await cursor(), place);
  // Rows that were never shown have an estimated height, so that the page may scroll a little.
  const back = await page.$eval('#list .at', (element) => element.getBoundingClientRect().top);
  assert.ok(back >= 0 && back < 900, 'back where one was: ' + back);
  await page.goBack();
  assert.ok(await page.isVisible('#file-head'), 'and the browser goes back to the file');
  await page.keyboard.press('Escape');
  await page.click('#close-all');
}

async function ticksAreKeptAndSaved(page, context) {
  await page.evaluate(() => { groupsOpen.clear(); showList(false); setAt(null); scrollTo(0, 0); });
  const card = await page.evaluate(() => { const entry = list.entries.find((other) => other.group && other.group.card && other.group.card.items[0].kind !== informs); setAt(entry, true); return entry.group.rows.length; });
  await page.keyboard.press('x');
  const rows = await page.evaluate(() => allItems.filter(isTicked).length);
  assert.ok(rows >= card && card >= 5, 'a card ticks all of its items');
  await page.keyboard.press('j');
  await page.click('#open-all');
  await page.evaluate(() => setAt(list.entries.find((entry) => entry.row && entry.row.file.path.includes('onerror') && entry.row.line === 1), true));
  await page.keyboard.press('x');
  assert.equal(await page.$$eval('#list .at .tick:checked', (boxes) => boxes.length), 1);
  const before = await page.textContent('#bar-text');
  assert.match(before, /^[1-9]\d* of /);
  const saved = page.waitForEvent('download');
  await page.click('#save');
  const bytes = fs.readFileSync(await (await saved).path());
  const lines = bytes.toString('latin1').split('\n');
  assert.equal(lines[0], 'script,kind,command,statement,detail,before,after,count,reason');
  assert.equal(lines.pop(), '');
  assert.equal(new Set(lines).size, lines.length, 'each row once');
  assert.deepEqual(lines.slice(1), await page.evaluate(() => ticksToSave()), 'the rows as they came');
  assert.ok(lines.some((line) => line.includes('<img src=x')));
  await page.reload();
  await page.waitForSelector('#list .block');
  assert.equal(await page.textContent('#bar-text'), before);
  await page.check('#hide-done');
  await page.click('#open-all');
  assert.equal(await page.$$eval('#list .item.done', (items) => items.length), 0);
  const other = await openPage(context, pageWith('other', (script, body, accept) => { accept.forEach((row, i) => { accept[i] = row + '!'; }); }));
  assert.match(await other.textContent('#bar-text'), /^0 of /, 'a tick belongs to what would be accepted');
  await other.close();
  await page.click('#clear');
}

// Outputs and items in every state.
async function showsStates(context) {
  const states = ['behind', 'edited', 'unknown', 'cut', 'old', 'same'];
  let count = 0;
  const path = pageWith('states', (script, body) => {
    if (script.rows.length === 0 || body === null) return;
    script.output = states[count++ % states.length];
    const [row] = script.rows;
    body[0].splice(1, 2, [7, ['mine <b>', 'too']], [3, ['theirs']]);
    row[4][0][1] = { edited: 'changed', unknown: 'changed?', same: 'accepted' }[script.output] || 'open';
  });
  const page = await openPage(context, path);
  const summary = await page.textContent('#summary');
  for (const label of ['behind', 'edited', 'unknown', 'cut off', 'out of date', 'as written']) assert.ok(summary.includes(' ' + label), label);
  const behind = await page.evaluate(() => { openFile(files.find((file) => file.output === 'behind')); openAll(true); return view.file.path; });
  assert.deepEqual((await texts(page, '#list .item:first-child figcaption')).slice(1), ['Output that is there, line 7', 'What would be written, line 3']);
  assert.equal(await page.textContent('#list .there'), 'Output that is there, line 7mine <b>too');
  assert.ok((await page.textContent('#file-head')).includes('merge'), behind);
  for (const [output, state, done, fixed] of [['edited', 'changed', true, true], ['unknown', 'changed?', false, false], ['same', 'accepted', true, true]]) {
    const seen = await page.evaluate((word) => {
      const item = allItems.find((other) => other.file !== null && other.row.file.output === word && other.row.items[0] === other && other.row === other.row.file.rows[0] && other.kind !== informs);
      openFile(item.row.file);
      return [item.state, isDone(item), isSettled(item), list.entries[0].element.querySelector('.state').textContent];
    }, output);
    assert.deepEqual(seen.slice(0, 3), [state, done, fixed], output);
    assert.ok(seen[3].includes(state), output);
  }
  await page.keyboard.press('Escape');
  await page.selectOption('#output', 'cut');
  assert.ok((await texts(page, '#matrix td[data-output]')).every((text) => text === 'cut off'));
  await page.screenshot({ path: folder + '/states.png' });
  await page.close();
}

// In a frame without storage and without an address of its own, as another page may show it.
async function worksInAFrame(context) {
  const path = folder + '/frame.html';
  const html = fs.readFileSync(pagePath, 'utf8').replaceAll('&', '&amp;').replaceAll('"', '&quot;');
  fs.writeFileSync(path, '<!DOCTYPE html><iframe sandbox="allow-scripts" width="1200" height="800" srcdoc="' + html + '"></iframe>');
  const outer = await context.newPage();
  outer.on('pageerror', (error) => troubles.push('frame: ' + error.message));
  await outer.goto(pathToFileURL(path).href);
  const frame = outer.frames()[1];
  await frame.waitForSelector('#list .block');
  await frame.click('#matrix tbody a');
  await frame.click('#list .tick');
  assert.match(await frame.textContent('#bar-text'), /^[1-9]/);
  await frame.click('#back');
  await frame.click('#kinds .chip');
  assert.ok(await frame.isVisible('#matrix'));
  await outer.close();
}

async function looks(page) {
  for (const theme of ['light', 'dark'])
    for (const width of [1280, 390]) {
      await page.setViewportSize({ width, height: 900 });
      await page.emulateMedia({ colorScheme: theme });
      await page.waitForSelector('html[data-theme=' + theme + ']');
      await page.screenshot({ path: folder + '/all_' + theme + '_' + width + '.png' });
      assert.ok(await page.evaluate(() => document.documentElement.scrollWidth <= innerWidth), 'nothing sticks out at ' + width);
      await page.evaluate(() => { openFile(files.find((file) => file.path.endsWith('menu.mrl'))); openAll(true); });
      await page.waitForTimeout(100);
      await page.screenshot({ path: folder + '/file_' + theme + '_' + width + '.png' });
      assert.ok(await page.evaluate(() => document.documentElement.scrollWidth <= innerWidth), 'nothing sticks out of a file at ' + width);
      await page.keyboard.press('Escape');
    }
  await page.setViewportSize({ width: 1280, height: 900 });
  await page.evaluate(() => openAll(true));
  await page.emulateMedia({ media: 'print' });
  await page.evaluate(() => window.dispatchEvent(new Event('beforeprint')));
  assert.equal((await texts(page, '#list .item')).length, (await rowsOf(page)).length, 'all rows are printed');
  assert.ok((await texts(page, '#list .item')).every((text) => text.includes('Script, line')), 'with labels on their sides');
  assert.ok((await page.pdf()).length > 10000, 'prints');
}

// Seconds of CPU time that a page takes to open, without the browser's own start, and its elements and megabytes of heap.
async function costs(context, path, act) {
  const page = await context.newPage();
  const client = await context.newCDPSession(page);
  await client.send('Performance.enable');
  const measure = async () => {
    const { metrics } = await client.send('Performance.getMetrics');
    const of = (name) => metrics.find((metric) => metric.name === name).value;
    return { seconds: of('ProcessTime'), elements: of('Nodes'), megabytes: of('JSHeapUsedSize') / 1e6 };
  };
  await page.goto(pathToFileURL(pagePath).href); // the same process shows the next one
  await page.waitForSelector('#list .block');
  const before = await measure();
  await page.goto(pathToFileURL(path).href);
  await page.waitForSelector('#list .block');
  if (act) await page.evaluate(act);
  await page.waitForTimeout(300);
  const after = await measure();
  await page.close();
  return { ...after, seconds: after.seconds - before.seconds };
}

async function opensMuchQuickly(context) {
  assert.ok(fs.statSync(manyPath).size < 20e6, '500 scripts take under 20 MB');
  const many = await costs(context, manyPath);
  assert.ok(many.seconds < 4, '500 scripts, 20,000 items, open in under four seconds of CPU time: ' + many.seconds);
  const large = await costs(context, largePath, () => { openFile(files[0]); });
  assert.ok(large.seconds < 1, '5,000 items open in under a second of CPU time: ' + large.seconds);
  const open = await costs(context, largePath, () => { openFile(files[0]); openAll(true); });
  assert.ok(open.elements < 20000 && open.megabytes < 50, 'elements are what is shown: ' + open.elements + ', ' + open.megabytes + ' MB');
  return [many, large, open].map((cost) => cost.seconds.toFixed(2) + ' s, ' + cost.elements + ' nodes, ' + cost.megabytes.toFixed(0) + ' MB').join('; ');
}

async function main() {
  const browser = await chromium.launch({
    executablePath: process.env.CHROMIUM, args: ['--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run',
      '--disable-background-networking', '--disable-component-update', '--disable-sync'],
  });
  const context = await browser.newContext({ viewport: { width: 1280, height: 900 } });
  const page = await openPage(context, pagePath);
  for (const test of [sorts, filters, opensTheHostileFile, opensARowInPlace, keysFollowWhatIsShown, ticksAreKeptAndSaved]) {
    await test(page, context);
    console.log('browser: ' + test.name);
  }
  await looks(page);
  await showsStates(context);
  await worksInAFrame(context);
  const spent = await opensMuchQuickly(context);
  await browser.close();
  assert.deepEqual(troubles, []);
  console.log('browser: 500 scripts, 5,000 items, all of these open: ' + spent + '; no error, no request');
}

main().catch((error) => { console.error(error); process.exit(1); });
