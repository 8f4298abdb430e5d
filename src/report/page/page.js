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
function recall(key) {
  try { return localStorage.getItem(key); } catch (error) { return memory.get(key) || null; }
}
function remember(key, value) {
  try {
    if (value === null) localStorage.removeItem(key); else localStorage.setItem(key, value);
  } catch (error) {
    memory.set(key, value);
  }
}

// ---- The report ----

const report = JSON.parse(document.querySelector('script.report').textContent);
const kinds = report.kinds;
kinds.forEach((kind, i) => { kind.color = i < 3 ? 'red' : i < 6 ? 'amber' : i < 8 ? 'blue' : 'gray'; });
const bodies = document.querySelectorAll('script.body');

// An item's tick is found again by what the item says, wherever its line has gone meanwhile.
function readItems(file, rows) {
  const seen = new Map();
  return rows.map((row) => {
    const [kind, line, lastLine, outputLine, outputLines, command, statement, detail, state] = row;
    const name = [file.path, kinds[kind].word, command, statement].join('\n');
    const count = (seen.get(name) || 0) + 1;
    seen.set(name, count);
    const key = 'murlreport\n' + name + '\n' + count;
    const item = { file, kind, line, lastLine, outputLine, outputLines, command, statement, detail, state, key };
    item.search = (file.path + '\n' + command + '\n' + statement + '\n' + detail).toLowerCase();
    item.ticked = recall(key) !== null;
    return item;
  });
}

const files = Array.from(document.querySelectorAll('script.script'), (element, index) => {
  const file = JSON.parse(element.textContent);
  file.index = index;
  file.items = readItems(file, file.items);
  return file;
});
const allItems = files.flatMap((file) => file.items);
const isDone = (item) => item.ticked || item.state === 'changed';

// ---- What is shown ----

const filter = { kinds: new Set(), command: '', text: '', hideDone: false };
let sorting = { column: -1, down: true };
let openFile = null;
let at = null; // the item that the keys work on

function isShown(item) {
  return (filter.kinds.size === 0 || filter.kinds.has(item.kind)) &&
    (filter.command === '' || item.command === filter.command) &&
    (filter.text === '' || item.search.includes(filter.text)) &&
    !(filter.hideDone && isDone(item));
}

function showSummary() {
  const done = allItems.filter(isDone).length;
  const clean = files.filter((file) => file.items.every(isDone)).length;
  $('summary').textContent = plural(files.length, 'script') + ', ' + plural(report.statements, 'statement') + '; ' +
    (clean === 1 ? '1 script has' : clean + ' scripts have') + ' nothing left to do';
  $('bar').setAttribute('aria-valuemax', allItems.length);
  $('bar').setAttribute('aria-valuenow', done);
  $('bar-fill').style.width = (allItems.length ? 100 * done / allItems.length : 100) + '%';
  $('bar-text').textContent = done + ' of ' + allItems.length + ' done';
}

function showKinds() {
  $('kinds').replaceChildren(...kinds.map((kind, i) => {
    const count = allItems.filter((item) => item.kind === i).length;
    return count === 0 ? null : make('button', {
      type: 'button', class: 'chip ' + kind.color, title: kind.title, 'data-kind': kind.word,
      'aria-pressed': filter.kinds.has(i) ? 'true' : 'false',
      onclick: () => { if (!filter.kinds.delete(i)) filter.kinds.add(i); showAll(); },
    }, make('b', {}, String(count)), kind.word);
  }).filter(Boolean));
}

function fillCommands() {
  const counts = new Map();
  for (const item of allItems) counts.set(item.command, (counts.get(item.command) || 0) + 1);
  const words = [...counts.keys()].filter((word) => word !== '').sort((a, b) => a.localeCompare(b));
  $('command').replaceChildren(make('option', { value: '' }, 'all'),
    ...words.map((word) => make('option', { value: word }, word + ' (' + counts.get(word) + ')')));
}

// ---- Files by kinds ----

const matrixRows = 1000; // more files than that aren't listed at once

function compareRows(a, b) {
  if (sorting.column === -2) return a.file.path.localeCompare(b.file.path);
  if (sorting.column >= 0) return b.counts[sorting.column] - a.counts[sorting.column];
  for (let i = 0; i < kinds.length; i++)
    if (a.counts[i] !== b.counts[i]) return b.counts[i] - a.counts[i];
  return 0;
}

// The heads sort. The columns -1 and -2 are no kinds: the gravest kind and the file's name.
function matrixHead(columns) {
  const button = (column, text, title) => make('button', {
    type: 'button', title, class: sorting.column !== column ? '' : sorting.down ? 'down' : 'up', onclick: () => {
      sorting = { column, down: sorting.column === column ? !sorting.down : true };
      showMatrix();
    },
  }, text);
  return make('tr', {},
    make('th', { scope: 'col' }, button(-2, 'file', 'sort by name'), ' ', button(-1, 'gravest', 'sort by the gravest kind')),
    ...columns.map((i) => make('th', { scope: 'col' }, button(i, kinds[i].word, kinds[i].title))),
    make('th', { scope: 'col' }, 'done'));
}

function matrixRow(row, columns) {
  const done = row.file.items.filter(isDone).length;
  const total = row.file.items.length;
  return make('tr', {},
    make('th', { scope: 'row' }, make('a', { class: 'path', href: '#file=' + row.file.index }, row.file.path)),
    ...columns.map((i) => row.counts[i] === 0 ? make('td', { class: 'none' }, '·')
      : make('td', { 'data-kind': kinds[i].word }, make('b', { class: kinds[i].color }, String(row.counts[i])))),
    make('td', { 'data-kind': 'done', class: done === total ? 'all-done' : '' }, done + '/' + total));
}

function showMatrix() {
  const rows = files.map((file) => {
    const counts = kinds.map(() => 0);
    for (const item of file.items) if (isShown(item)) counts[item.kind]++;
    return { file, counts };
  }).filter((row) => row.counts.some((count) => count > 0));
  const columns = kinds.map((kind, i) => i).filter((i) => rows.some((row) => row.counts[i] > 0));
  rows.sort((a, b) => (compareRows(a, b) || a.file.index - b.file.index) * (sorting.down ? 1 : -1));
  $('matrix').tHead.replaceChildren(matrixHead(columns));
  $('matrix').tBodies[0].replaceChildren(...rows.slice(0, matrixRows).map((row) => matrixRow(row, columns)));
  if (rows.length > matrixRows)
    $('matrix').tBodies[0].append(make('tr', {}, make('th', { class: 'more' }, (rows.length - matrixRows) + ' more; filter by text')));
}

// ---- Items ----

function tick(item, ticked) {
  item.ticked = ticked;
  remember(item.key, ticked ? '1' : null);
  for (const element of document.querySelectorAll('[data-item]'))
    if (element.item === item) {
      element.classList.toggle('done', isDone(item));
      element.querySelector('input').checked = isDone(item);
    }
  showSummary();
}

function tickBox(item) {
  const changed = item.state === 'changed';
  return make('input', {
    type: 'checkbox', checked: isDone(item), disabled: changed,
    'aria-label': 'done: ' + kinds[item.kind].word + ', line ' + item.line,
    onchange: (event) => { tick(item, event.target.checked); showMatrixSoon(); },
  });
}

let matrixTimer = 0;
function showMatrixSoon() {
  clearTimeout(matrixTimer);
  matrixTimer = setTimeout(showMatrix, 50);
}

function itemRow(item) {
  const kind = kinds[item.kind];
  const row = make('li', {
    class: 'item' + (isDone(item) ? ' done' : ''), 'data-item': true,
    onclick: () => { setAt(row, false); },
  },
  tickBox(item),
  make('span', { class: 'kind ' + kind.color, title: kind.title }, kind.word),
  make('span', { class: 'line' }, make('a', { href: '#file=' + item.file.index + '&line=' + item.line, title: 'line of the script' }, String(item.line))),
  make('span', { class: 'what' }, make('code', {}, item.statement), ' ', make('span', { class: 'detail' }, item.detail)),
  make('span', { class: 'state' }, item.state === 'changed' ? 'changed' : ''));
  row.item = item;
  return row;
}

// Items are made when their group is opened, as a report may have very many.
function itemGroup(file, items, mend, open) {
  const list = make('ul', { class: 'items' });
  const fill = () => { if (list.childElementCount === 0) list.append(...items.map(itemRow)); };
  const counts = new Map();
  for (const item of items) counts.set(item.kind, (counts.get(item.kind) || 0) + 1);
  const group = make('details', { class: 'group', ontoggle: () => { if (group.open) fill(); } },
    make('summary', {}, mend ? 'mend in ' : 'finish in ', make('span', { class: 'path' }, mend ? file.path : file.output),
      mend ? ' and convert again' : '',
      make('span', { class: 'counts' }, [...counts].map(([kind, count]) => count + ' ' + kinds[kind].word).join(', '))), list);
  group.fill = fill;
  if (open) { fill(); group.open = true; }
  return group;
}

const itemsOpened = 150; // so many items are shown without being asked for
const groupsShown = 200;

function showWork() {
  for (const [id, mend] of [['mend', true], ['finish', false]]) {
    const groups = files.map((file) => [file, file.items.filter((item) => kinds[item.kind].mend === mend && isShown(item))])
      .filter(([, items]) => items.length > 0);
    const total = groups.reduce((sum, [, items]) => sum + items.length, 0);
    const work = $(id).querySelector('.work');
    const add = (from) => {
      work.append(...groups.slice(from, from + groupsShown).map(([file, items]) => itemGroup(file, items, mend, total <= itemsOpened)));
      if (groups.length > from + groupsShown) {
        const more = make('button', { type: 'button', onclick: () => { more.remove(); add(from + groupsShown); } },
          (groups.length - from - groupsShown) + ' more files');
        work.append(more);
      }
    };
    work.replaceChildren();
    if (groups.length === 0) work.append(make('p', { class: 'empty' }, 'Nothing' + (total === allItems.length ? ' is left.' : ' by this filter.')));
    add(0);
  }
}

// ---- The guides ----

// A paragraph of the guide: `code`, **strong** and the text of [links].
function inline(text) {
  const parts = [];
  for (const part of text.split(/(`[^`]*`|\*\*[^*]*\*\*|\[[^\]]*\]\([^)]*\))/)) {
    if (part.startsWith('`') && part.length > 1) parts.push(make('code', {}, part.slice(1, -1)));
    else if (part.startsWith('**')) parts.push(make('b', {}, part.slice(2, -2)));
    else if (part.startsWith('[') && part.includes('](')) parts.push(part.slice(1, part.indexOf('](')));
    else if (part !== '') parts.push(part);
  }
  return parts;
}

function guideBlocks(text) {
  const blocks = [];
  for (const [i, piece] of text.split(/^```(.*)$/m).entries()) {
    // The pieces are prose, the word of a fence, what it holds, the closing fence's word, and so on.
    if (i % 4 === 1) {
      const label = piece.replace('mrl', '').trim();
      if (label !== '') blocks.push(make('div', { class: 'label' }, label));
    } else if (i % 4 === 2) {
      blocks.push(make('pre', {}, piece.replace(/^\n|\n$/g, '')));
    } else if (i % 4 === 0) {
      for (const paragraph of piece.split(/\n\s*\n/)) {
        if (paragraph.trim() === '') continue;
        if (/^\s*- /.test(paragraph))
          blocks.push(make('ul', {}, ...paragraph.trim().split(/\n?^- /m).filter(Boolean).map((line) => make('li', {}, ...inline(line)))));
        else
          blocks.push(make('p', {}, ...inline(paragraph.trim())));
      }
    }
  }
  return blocks;
}

function guideOf(title, text) {
  if (text === undefined) return null;
  const body = make('div', { class: 'guide' });
  return make('details', { ontoggle: () => { if (body.childElementCount === 0) body.append(...guideBlocks(text)); } },
    make('summary', {}, title), body);
}

// ---- One file ----

function note(item) {
  const kind = kinds[item.kind];
  const element = make('div', { class: 'note' + (isDone(item) ? ' done' : ''), 'data-item': true, onclick: () => { setAt(element, false); } },
    make('div', { class: 'head' }, tickBox(item),
      make('span', { class: 'kind ' + kind.color, title: kind.title }, kind.word), make('b', {}, item.command),
      make('span', { class: 'state' }, item.state === 'changed' ? 'changed' : '')),
    make('div', { class: 'detail' }, item.detail),
    make('div', {}, kind.to_do),
    guideOf('The guide: ' + item.command, report.commands[item.command]),
    guideOf('The guide: ' + kind.word, report.guide[kind.word]));
  element.item = item;
  return element;
}

// The lines of a file by statement: where each begins on either side. Statements that share a line of the script,
// and what comes before the first, are one.
function statementRows(body) {
  const rows = [{ old: 1, new: 1 }];
  for (let i = 0; i < body.pairs.length; i += 2) {
    const last = rows[rows.length - 1];
    if (body.pairs[i] > last.old) rows.push({ old: body.pairs[i], new: Math.max(body.pairs[i + 1], last.new) });
  }
  rows.forEach((row, i) => {
    const next = rows[i + 1] || { old: body.old.length + 1, new: body.new.length + 1 };
    row.oldEnd = next.old;
    row.newEnd = next.new;
  });
  return rows;
}

function textCell(side, lines, from, to) {
  const cell = make('div', { class: 'text ' + side });
  for (let line = from; line < to && line <= lines.length; line++)
    cell.append(make('div', { 'data-line': line }, make('span', {}, lines[line - 1])));
  return cell;
}

function sides(file) {
  const body = JSON.parse(bodies[file.index].textContent);
  if (body === null) return make('p', { class: 'empty' }, 'Nothing is left to do in this script.');
  if (body.old === null || body.new === null) return make('p', { class: 'empty' }, 'The script is too long to be shown here.');
  const items = file.items.filter(isShown);
  const table = make('div', { class: 'sides' }, make('div', { class: 'row heads' },
    make('div', { class: 'path' }, file.path), make('div', { class: 'path' }, file.output), make('div', {}, 'what is left')));
  for (const row of statementRows(body)) {
    const notes = items.filter((item) => item.line >= row.old && item.line < row.oldEnd);
    table.append(make('div', { class: 'row' + (notes.length > 0 ? ' marked' : ''), 'data-row': row.old },
      textCell('old', body.old, row.old, row.oldEnd), textCell('new', body.new, row.new, row.newEnd),
      make('div', { class: 'notes' }, ...notes.map(note))));
  }
  return table;
}

function showFile(file, line) {
  const go = (step) => { const next = files[file.index + step]; if (next) location.hash = 'file=' + next.index; };
  const parts = [[true, 'First: mend in ' + file.path + ' and convert it again'], [false, 'Then: finish in ' + file.output]];
  $('file').replaceChildren(
    make('div', { class: 'file-head' },
      make('button', { type: 'button', id: 'back', onclick: () => { location.hash = ''; } }, '← All files'),
      make('h2', { class: 'path' }, file.path),
      make('button', { type: 'button', disabled: file.index === 0, onclick: () => go(-1) }, '← Previous'),
      make('button', { type: 'button', disabled: file.index === files.length - 1, onclick: () => go(1) }, 'Next →')),
    ...(file.older ? [make('p', { class: 'older' }, file.output + ' is older than its script.')] : []),
    ...parts.map(([mend, title]) => {
      const items = file.items.filter((item) => kinds[item.kind].mend === mend && isShown(item));
      return items.length === 0 ? null : make('section', {}, make('h2', {}, title), make('div', { class: 'group' }, make('ul', { class: 'items' }, ...items.map(itemRow))));
    }).filter(Boolean),
    make('section', {}, make('h2', {}, 'Old and new, statement by statement'), sides(file)));
  $('overview').hidden = true;
  $('file').hidden = false;
  const rows = [...document.querySelectorAll('.row.marked')];
  const target = line > 0 ? rows.find((row) => [...row.querySelectorAll('.note')].some((element) => element.item.line === line)) : null;
  if (target) {
    setAt(target.querySelector('.note'), true);
    for (const details of target.querySelectorAll('.note:first-child details')) details.open = true;
  } else {
    window.scrollTo(0, 0);
  }
}

// ---- Ways about ----

function setAt(element, scroll) {
  for (const other of document.querySelectorAll('.at')) other.classList.remove('at');
  at = element;
  if (element === null) return;
  element.classList.add('at');
  if (scroll) element.scrollIntoView({ block: 'center' });
}

function step(by) {
  for (const group of document.querySelectorAll('#overview details.group')) if (openFile === null && by !== 0 && group.open) group.fill();
  const shown = [...document.querySelectorAll((openFile === null ? '#overview' : '#file') + ' [data-item]')].filter((element) => element.offsetParent !== null);
  if (shown.length === 0) return;
  const index = shown.indexOf(at);
  setAt(shown[index === -1 ? (by > 0 ? 0 : shown.length - 1) : Math.min(Math.max(index + by, 0), shown.length - 1)], true);
}

function followHash() {
  const place = new URLSearchParams(location.hash.slice(1));
  const file = place.has('file') ? files[Number(place.get('file'))] : undefined;
  setAt(null, false);
  openFile = file || null;
  if (file) {
    showFile(file, Number(place.get('line') || 0));
    return;
  }
  $('file').hidden = true;
  $('file').replaceChildren();
  $('overview').hidden = false;
}

function showAll() {
  showSummary();
  showKinds();
  showMatrix();
  showWork();
  if (openFile !== null) followHash();
}

function setTheme(theme) {
  remember('murlreport-theme', theme === 'system' ? null : theme);
  const dark = theme === 'dark' || (theme === 'system' && matchMedia('(prefers-color-scheme: dark)').matches);
  document.documentElement.dataset.theme = dark ? 'dark' : 'light';
  $('theme').textContent = 'Theme: ' + theme;
}

function nextTheme() {
  const themes = ['system', 'light', 'dark'];
  setTheme(themes[(themes.indexOf(recall('murlreport-theme') || 'system') + 1) % themes.length]);
}

const keys = {
  j: () => step(1),
  k: () => step(-1),
  x: () => { if (at !== null && at.item.state !== 'changed') { tick(at.item, !at.item.ticked); showMatrixSoon(); } },
  n: () => { location.hash = 'file=' + Math.min(openFile === null ? 0 : openFile.index + 1, files.length - 1); },
  p: () => { location.hash = 'file=' + Math.max(openFile === null ? 0 : openFile.index - 1, 0); },
  t: nextTheme,
  Escape: () => { location.hash = ''; },
  Enter: () => { if (at !== null && openFile === null) location.hash = 'file=' + at.item.file.index + '&line=' + at.item.line; },
  '/': () => $('text').focus(),
  '?': () => $('help').showModal(),
};

function onKey(event) {
  if (event.ctrlKey || event.metaKey || event.altKey || $('help').open) return;
  const field = /^(INPUT|SELECT|TEXTAREA)$/.test(event.target.tagName) && event.target.type !== 'checkbox';
  if (field) {
    if (event.key === 'Escape') event.target.blur();
    return;
  }
  if (event.key === 'Enter' && event.target !== document.body) return;
  if (keys[event.key] === undefined) return;
  event.preventDefault();
  keys[event.key]();
}

function start() {
  setTheme(recall('murlreport-theme') || 'system');
  matchMedia('(prefers-color-scheme: dark)').addEventListener('change', () => setTheme(recall('murlreport-theme') || 'system'));
  $('theme').addEventListener('click', nextTheme);
  $('help-button').addEventListener('click', () => $('help').showModal());
  fillCommands();
  $('command').addEventListener('change', (event) => { filter.command = event.target.value; showAll(); });
  $('text').addEventListener('input', (event) => { filter.text = event.target.value.trim().toLowerCase(); showAll(); });
  $('hide-done').addEventListener('change', (event) => { filter.hideDone = event.target.checked; showAll(); });
  $('clear').addEventListener('click', () => {
    filter.kinds.clear();
    filter.command = $('command').value = '';
    filter.text = $('text').value = '';
    filter.hideDone = $('hide-done').checked = false;
    showAll();
  });
  document.addEventListener('keydown', onKey);
  window.addEventListener('hashchange', followHash);
  window.addEventListener('beforeprint', () => {
    for (const group of document.querySelectorAll('details.group')) { group.fill(); group.open = true; }
  });
  showAll();
  followHash();
}

start();
