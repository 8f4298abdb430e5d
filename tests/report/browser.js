// The page in a real browser: sorts, filters, opens, ticks, remembers; asks no network and reports no error.
//   node browser.js PAGE MANY FOLDER    PAGE is of tests/report/tree and a hostile script, MANY of 500 scripts;
//                                       screenshots go to FOLDER
// Needs playwright-core, and a Chromium that CHROMIUM names.
'use strict';

const assert = require('node:assert/strict');
const fs = require('node:fs');
const { pathToFileURL } = require('node:url');
const { chromium } = require('playwright-core');

const [pagePath, manyPath, folder] = process.argv.slice(2);
const troubles = [];

// A page that notes every error and every request but that for its own file.
async function openPage(context, path) {
  const page = await context.newPage();
  const url = pathToFileURL(path).href;
  page.on('console', (message) => { if (message.type() === 'error') troubles.push('console: ' + message.text()); });
  page.on('pageerror', (error) => troubles.push('error: ' + error.message));
  page.on('request', (request) => { if (!/^(data:|file:)/.test(request.url())) troubles.push('request: ' + request.url()); });
  await page.goto(url);
  await page.waitForSelector('#matrix tbody tr');
  return page;
}

const texts = (page, selector) => page.$$eval(selector, (elements) => elements.filter((e) => e.offsetParent !== null).map((e) => e.textContent));

async function sorts(page) {
  const counts = () => page.$$eval('#matrix tbody tr', (rows) => rows.map((row) => Number((row.querySelector('td[data-kind=broken]') || { textContent: '0' }).textContent)));
  await page.click('#matrix thead button:text-is("broken")');
  const down = await counts();
  assert.deepEqual(down, [...down].sort((a, b) => b - a), 'sorted by broken, most first');
  assert.ok(down[0] > down[down.length - 1]);
  await page.click('#matrix thead button:text-is("file")');
  const names = await texts(page, '#matrix tbody th a');
  assert.deepEqual(names, [...names].sort((a, b) => a.localeCompare(b)), 'sorted by name');
  await page.click('#matrix thead button:text-is("gravest")');
  assert.match(await page.textContent('#matrix tbody tr'), /1/);
}

async function filters(page) {
  const all = (await texts(page, '#overview .item')).length;
  await page.click('#kinds [data-kind=frozen]');
  const kinds = new Set(await texts(page, '#overview .item .kind'));
  assert.deepEqual([...kinds], ['frozen']);
  await page.selectOption('#command', 'POLYGON');
  const statements = await texts(page, '#overview .item code');
  assert.ok(statements.length > 0 && statements.every((text) => /^POLYGON/i.test(text)));
  await page.fill('#text', 'no such text anywhere');
  assert.equal((await texts(page, '#overview .item')).length, 0);
  await page.click('#clear');
  assert.equal((await texts(page, '#overview .item')).length, all);
}

// A script's name and text are text, whatever they spell.
async function opensTheHostileFile(page) {
  await page.click('#matrix tbody a:has-text("onerror")');
  await page.waitForSelector('#file .sides');
  assert.equal(await page.$('#file img'), null);
  const old = await page.textContent('#file .sides');
  assert.ok(old.includes('</script><b>bold</b>'), 'the string is shown as it stands');
  assert.ok(old.includes('\u00e9'), 'Latin-1 is shown');
  assert.equal(await page.$('#file .sides b:text-is("bold")'), null);
  assert.ok((await texts(page, '#file .note')).length > 0);
  await page.keyboard.press('Escape');
  await page.waitForSelector('#overview:not([hidden])');
}

async function opensAFileAtALine(page) {
  const link = await page.$('#overview .item .line a');
  await link.click();
  await page.waitForSelector('#file .note.at');
  const rows = await page.$$eval('#file .row.marked', (marked) => marked.map((row) => row.querySelectorAll('.old [data-line], .new [data-line]').length));
  assert.ok(rows.every((lines) => lines > 0), 'a marked statement has lines');
  assert.ok(!(await page.$$eval('#file', ([file]) => [...file.childNodes].some((node) => node.nodeType === 3))), 'no stray text');
  await page.click('#file .note.at details summary');
  assert.ok((await page.textContent('#file .note.at .guide')).length > 40, 'the guide is beside the item');
  await page.click('#back');
}

async function ticksOutliveAReload(page) {
  await page.keyboard.press('j');
  await page.keyboard.press('x');
  const before = await page.textContent('#bar-text');
  assert.match(before, /^1 of /);
  await page.reload();
  await page.waitForSelector('#matrix tbody tr');
  assert.equal(await page.textContent('#bar-text'), before);
  assert.equal(await page.$$eval('#overview .item.done', (items) => items.length), 1);
  await page.check('#hide-done');
  assert.equal(await page.$$eval('#overview .item.done', (items) => items.length), 0);
  await page.click('#clear');
}

async function looks(page) {
  for (const theme of ['light', 'dark'])
    for (const width of [1280, 390]) {
      await page.setViewportSize({ width, height: 900 });
      await page.emulateMedia({ colorScheme: theme });
      await page.waitForSelector('html[data-theme=' + theme + ']');
      await page.screenshot({ path: folder + '/all_' + theme + '_' + width + '.png' });
      assert.ok(await page.evaluate(() => document.documentElement.scrollWidth <= innerWidth), 'nothing sticks out at ' + width);
      await page.evaluate(() => { location.hash = 'file=' + files.findIndex((file) => file.path.endsWith('menu.mrl')); });
      await page.waitForSelector('#file .sides');
      await page.screenshot({ path: folder + '/file_' + theme + '_' + width + '.png' });
      assert.ok(await page.evaluate(() => document.documentElement.scrollWidth <= innerWidth), 'nothing sticks out of a file at ' + width);
      await page.evaluate(() => { location.hash = ''; });
      await page.waitForSelector('#overview:not([hidden])');
    }
  await page.setViewportSize({ width: 1280, height: 900 });
  assert.ok((await page.pdf()).length > 10000, 'prints');
}

async function opensManyQuickly(context) {
  assert.ok(fs.statSync(manyPath).size < 20e6, '500 scripts take under 20 MB');
  const start = Date.now();
  const page = await openPage(context, manyPath);
  const spent = Date.now() - start;
  assert.ok(spent < 2000, '500 scripts open in under two seconds: ' + spent + ' ms');
  assert.ok((await texts(page, '#matrix tbody tr')).length >= 500);
  return spent;
}

async function main() {
  const browser = await chromium.launch({
    executablePath: process.env.CHROMIUM, args: ['--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run',
      '--disable-background-networking', '--disable-component-update', '--disable-sync'],
  });
  const context = await browser.newContext({ viewport: { width: 1280, height: 900 } });
  const page = await openPage(context, pagePath);
  for (const test of [sorts, filters, opensTheHostileFile, opensAFileAtALine, ticksOutliveAReload]) {
    await test(page);
    console.log('browser: ' + test.name);
  }
  await looks(page);
  const spent = await opensManyQuickly(context);
  await browser.close();
  assert.deepEqual(troubles, []);
  console.log('browser: 500 scripts open in ' + spent + ' ms; no error, no request');
}

main().catch((error) => { console.error(error); process.exit(1); });
