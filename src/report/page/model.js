'use strict';

// ---- Small tools ----

const $ = (id) => document.getElementById(id);

// Makes an element. What a script holds becomes text, never markup.
function make(tag, properties, ...children) {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(properties || {})) {
    if (name === 'class') element.className = value;
    else if (name.startsWith('on')) element.addEventListener(name.slice(2), value);
    else if (value === true) element.setAttribute(name, '');
    else if (value !== false && value !== undefined) element.setAttribute(name, value);
  }
  element.append(...children.filter((child) => child !== null && child !== undefined));
  return element;
}

const plural = (count, word) => count + ' ' + word + (count === 1 ? '' : 's');

// What the browser keeps; without storage it lasts as long as the page.
const memory = new Map();
const stored = (act, otherwise) => { try { return act(localStorage); } catch (error) { return otherwise(); } };
const recall = (key) => stored((store) => store.getItem(key), () => memory.get(key) || null);
const remember = (key, value) => stored((store) => (value === null ? store.removeItem(key) : store.setItem(key, value)), () => memory.set(key, value));

// ---- The report ----

const report = JSON.parse(document.querySelector('script.report').textContent);
const kinds = report.kinds;
const kindNamed = new Map(kinds.map((kind, i) => [kind.word, i]));
const informs = kindNamed.get('dropped'); // the kind that asks for nothing
kinds.forEach((kind, i) => {
  kind.color = i <= kindNamed.get('guarded') ? 'red' : i <= kindNamed.get('gone') ? 'amber' : i <= kindNamed.get('form') ? 'blue' : 'gray';
});

// What an output is, by the word of its state. A script is done only when its output is well.
const outputs = {
  none: { label: 'not converted', title: 'There is no output yet', color: 'gray' },
  same: { label: 'as written', title: 'The output is what murlconv writes now', color: 'gray', well: true },
  cut: { label: 'cut off', title: 'The output is empty or ends too early: convert again', color: 'red' },
  unknown: { label: 'unknown', title: 'Nothing is remembered of the output, and it is not what is written now', color: 'amber' },
  old: { label: 'out of date', title: 'The output is unedited, and what is written now differs: convert again', color: 'amber' },
  edited: { label: 'edited', title: 'The output was edited by hand, and what is written now is in it', color: 'blue', well: true },
  behind: { label: 'behind', title: 'The output was edited by hand, and what is written now differs: convert again to merge', color: 'amber' },
};

// The rows of a script, each a statement with its items.
function readRow(file, data, index) {
  const [line, lastLine, command, statement, items] = data;
  const row = { file, index, line, lastLine, command, statement, open: false, height: 0 };
  row.items = items.map(([kind, state, detail, summed]) => ({ row, kind, state, detail, summed, accept: null, id: null, card: null }));
  row.work = row.items.some((item) => item.kind !== informs);
  row.mend = row.items.some((item) => kinds[item.kind].mend);
  return row;
}

const [bodies, accepts] = ['script.body', 'script.accept'].map((data) => [...document.querySelectorAll(data)]);
const files = Array.from(document.querySelectorAll('script.script'), (element, index) => {
  const file = JSON.parse(element.textContent);
  element.remove();
  file.index = index;
  file.rows = file.rows.map((row, i) => readRow(file, row, i));
  file.items = file.rows.flatMap((row) => row.items);
  return file;
});
const allRows = files.flatMap((file) => file.rows);
const allItems = files.flatMap((file) => file.items);

// The lines that a row shows, read when the first one of its script is opened; null if the script is too long.
function bodyOf({ file, index }) {
  if (file.body === undefined) {
    file.body = JSON.parse(bodies[file.index].textContent);
    bodies[file.index].remove();
  }
  return file.body && file.body[index];
}

// ---- Ticks ----

// Ticks belong to a folder and to what would be accepted. Items that are accepted together are ticked together.
const ticksKey = 'murlreport-ticks-' + report.folder;
const ticks = new Set();

// What another window has ticked meanwhile counts too.
function readTicks() {
  ticks.clear();
  for (const id of (recall(ticksKey) || '').split(' ')) if (id !== '') ticks.add(id);
}
readTicks();

// Two numbers made of a text, as one word.
function fingerprint(text) {
  let left = 0xdeadbeef, right = 0x41c6ce57;
  for (let i = 0; i < text.length; i++) {
    left = Math.imul(left ^ text.charCodeAt(i), 2654435761);
    right = Math.imul(right ^ text.charCodeAt(i), 1597334677);
  }
  left = Math.imul(left ^ (left >>> 16), 2246822507) ^ Math.imul(right ^ (right >>> 13), 3266489909);
  right = Math.imul(right ^ (right >>> 16), 2246822507) ^ Math.imul(left ^ (left >>> 13), 3266489909);
  return (right >>> 0).toString(36) + (left >>> 0).toString(36);
}

// What accepting an item would write, of which a tick is made; read when the first tick needs it.
function acceptOf(item) {
  const { file } = item.row;
  if (item.accept === null) JSON.parse(accepts[file.index].textContent).forEach((accept, i) => { file.items[i].accept = accept; });
  return item.accept;
}

const idOf = (item) => item.id || (item.id = fingerprint(acceptOf(item)));
const isSettled = (item) => item.kind === informs || item.state === 'changed' || item.state === 'accepted';
const isTicked = (item) => ticks.size > 0 && ticks.has(idOf(item));
const isDone = (item) => isSettled(item) || isTicked(item);

function tick(items, ticked) {
  readTicks();
  for (const item of items)
    if (!isSettled(item)) { if (ticked) ticks.add(idOf(item)); else ticks.delete(idOf(item)); }
  remember(ticksKey, ticks.size > 0 ? [...ticks].join(' ') : null);
}

// The rows that --accept-from takes, each once; what they hold are bytes.
function ticksToSave() {
  return [...new Set(allItems.filter((item) => !isSettled(item) && isTicked(item)).map(acceptOf))];
}

function saveTicks() {
  const text = report.header + '\n' + ticksToSave().map((row) => row + '\n').join('');
  const url = URL.createObjectURL(new Blob([Uint8Array.from(text, (c) => c.charCodeAt(0))], { type: 'text/csv' }));
  make('a', { href: url, download: 'ticks.csv' }).click();
  setTimeout(() => URL.revokeObjectURL(url), 10000);
}

// ---- What is selected ----

const view = { file: null, kinds: new Set(), command: '', output: '', text: '', hideDone: false, sort: 'gravest', up: false };

const isSelected = (item) => (view.kinds.size === 0 || view.kinds.has(item.kind)) && !(view.hideDone && isDone(item));

// FILE:LINE means that line, not one that begins with its digits.
function hasText(row) {
  if (view.text === '') return true;
  if (row.search === undefined) {
    const words = row.items.map((item) => kinds[item.kind].word + '\n' + kinds[item.kind].label + '\n' + item.detail + '\n' + item.state);
    row.search = [row.file.path + ':' + row.line, row.file.outputPath, row.command, row.statement, ...words, ''].join('\n').toLowerCase();
  }
  return row.search.includes(/:\d+$/.test(view.text) ? view.text + '\n' : view.text);
}

const isShown = (row) => (view.command === '' || row.command === view.command) && (view.output === '' || row.file.output === view.output) &&
  row.items.some(isSelected) && hasText(row);

// ---- What is alike ----

const alikeFrom = 5; // so many items that say the same make a card

// Items of a kind and command that say the same, over all files. What is fixed in the script, each in its way,
// is never a card.
const cards = (() => {
  const found = new Map();
  for (const item of allItems) {
    if (kinds[item.kind].mend) continue;
    const command = item.kind === informs ? '' : item.row.command;
    const key = [item.kind, command, item.summed ? '' : item.detail].join('\n');
    if (!found.has(key)) found.set(key, { key, kind: item.kind, command, items: [] });
    found.get(key).items.push(item);
  }
  const alike = [...found.values()].filter((card) => card.items.length >= alikeFrom);
  for (const card of alike) for (const item of card.items) item.card = card;
  return alike.sort((a, b) => a.kind - b.kind || b.items.length - a.items.length);
})();
