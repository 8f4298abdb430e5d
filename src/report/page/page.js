
// ---- Above the list ----

const fileIsDone = (file) => outputs[file.output].well === true && file.items.every(isDone);

function showSummary() {
  const work = allRows.filter((row) => row.work);
  const done = work.filter((row) => row.items.every(isDone)).length;
  const clean = files.filter(fileIsDone).length;
  const states = Object.keys(outputs).map((state) => [files.filter((file) => file.output === state).length, outputs[state].label]);
  $('summary').textContent = plural(files.length, 'script') + ', ' + plural(report.statements, 'statement') + '; ' +
    (clean === 1 ? '1 script has' : clean + ' scripts have') + ' nothing left to do. Outputs: ' +
    states.filter(([count]) => count > 0).map(([count, label]) => count + ' ' + label).join(', ');
  for (const [name, value] of [['max', work.length], ['now', done]]) $('bar').setAttribute('aria-value' + name, value);
  $('bar-fill').style.width = (work.length ? 100 * done / work.length : 100) + '%';
  $('bar-text').textContent = done + ' of ' + work.length + ' done';
  const unsaved = ticks.size > 0 ? ticksToSave().length : 0;
  $('save').disabled = unsaved === 0;
  $('save').textContent = unsaved === 0 ? 'Save ticks' : 'Save ticks (' + unsaved + ')';
}

function showKinds() {
  $('kinds').replaceChildren(...kinds.map((kind, i) => {
    const count = allRows.filter((row) => row.items.some((item) => item.kind === i)).length;
    return count === 0 ? null : make('button', {
      type: 'button', class: 'chip ' + kind.color, title: kind.title, 'data-kind': kind.word, 'aria-pressed': view.kinds.has(i) ? 'true' : 'false',
      onclick: () => { if (!view.kinds.delete(i)) view.kinds.add(i); filterAgain(); },
    }, make('b', {}, String(count)), kind.label);
  }).filter(Boolean));
}

function fillSelect(select, words, labels) {
  const counts = new Map();
  for (const word of words) counts.set(word, (counts.get(word) || 0) + 1);
  const sorted = [...counts.keys()].filter((word) => word !== '').sort((a, b) => a.localeCompare(b));
  select.replaceChildren(make('option', { value: '' }, 'all'),
    ...sorted.map((word) => make('option', { value: word }, labels(word) + ' (' + counts.get(word) + ')')));
}

// ---- Files by kind ----

let tableRows = 200; // more files than that are listed when they are asked for

function compareFiles(a, b) {
  if (view.sort === 'file') return a.file.path.localeCompare(b.file.path);
  if (view.sort === 'output') return Object.keys(outputs).indexOf(a.file.output) - Object.keys(outputs).indexOf(b.file.output);
  if (view.sort === 'done') return b.left - a.left;
  if (kindNamed.has(view.sort)) return b.counts[kindNamed.get(view.sort)] - a.counts[kindNamed.get(view.sort)];
  const i = kinds.findIndex((kind, column) => a.counts[column] !== b.counts[column]);
  return i === -1 ? 0 : b.counts[i] - a.counts[i];
}

// The files that are shown, in the order of the table: those with rows, and unless rows are selected by what they
// hold, those whose output isn't well.
function shownFiles() {
  const any = view.kinds.size === 0 && view.command === '';
  const rows = [];
  for (const file of files) {
    const counts = kinds.map(() => 0);
    let left = 0;
    for (const row of file.rows) {
      left += row.items.every(isDone) ? 0 : 1;
      if (isShown(row)) for (const item of row.items) counts[item.kind] += isSelected(item) ? 1 : 0;
    }
    const ill = any && !outputs[file.output].well && (view.output === '' || view.output === file.output) && file.path.toLowerCase().includes(view.text);
    if (ill || counts.some((count) => count > 0)) rows.push({ file, counts, left });
  }
  return rows.sort((a, b) => (view.up ? -1 : 1) * compareFiles(a, b) || a.file.index - b.file.index);
}

function tableHead(columns) {
  const head = (sort, text, title) => make('th', { scope: 'col', 'aria-sort': view.sort !== sort ? undefined : (view.up !== (sort === 'file' || sort === 'output')) ? 'ascending' : 'descending' },
    make('button', { type: 'button', title, 'data-sort': sort, onclick: () => {
      view.up = view.sort === sort && !view.up;
      view.sort = sort;
      writeAddress(false);
      showMatrix();
      $('matrix').querySelector('[data-sort=' + sort + ']').focus();
    } }, text));
  return make('tr', {}, head('file', 'file', 'sort by name'), head('output', 'output', 'sort by the output\'s state'),
    ...columns.map((i) => head(kinds[i].word, kinds[i].label, kinds[i].title)), head('done', 'done', 'sort by what is left'));
}

function tableRow(row, columns) {
  const { file } = row;
  const total = file.rows.filter((each) => each.work).length;
  const output = outputs[file.output];
  return make('tr', {}, make('th', { scope: 'row' }, fileLink(file, file.path)),
    make('td', { 'data-kind': 'output', 'data-output': file.output }, make('b', { class: output.color, title: output.title }, output.label)),
    ...columns.map((i) => row.counts[i] === 0 ? make('td', { class: 'none' }, '·')
      : make('td', { 'data-kind': kinds[i].label }, make('b', { class: kinds[i].color }, String(row.counts[i])))),
    make('td', { 'data-kind': 'done', class: row.left === 0 ? 'all-done' : '' }, (total - row.left) + '/' + total));
}

function showMatrix() {
  const rows = shownFiles();
  const columns = kinds.map((kind, i) => i).filter((i) => rows.some((row) => row.counts[i] > 0));
  $('gravest').setAttribute('aria-pressed', view.sort === 'gravest' ? 'true' : 'false');
  $('matrix').tHead.replaceChildren(tableHead(columns));
  $('matrix').tBodies[0].replaceChildren(...rows.slice(0, tableRows).map((row) => tableRow(row, columns)));
  if (rows.length > tableRows)
    $('matrix').tBodies[0].append(make('tr', {}, make('th', {}, make('button', { type: 'button', onclick: () => { tableRows = Infinity; showMatrix(); } }, (rows.length - tableRows) + ' more'))));
}

// ---- The list: groups of rows under heads ----

const rowsOpened = 150; // so many rows are shown without being asked for
const groupsOpen = new Map(); // by key, of those that were opened or closed

function shownGroups() {
  const rows = allRows.filter(isShown);
  const byFile = (mend) => files.map((file) => ({ key: (mend ? 'mend ' : 'finish ') + file.index, file, mend, rows: [] }));
  const mend = byFile(true), finish = byFile(false);
  for (const row of rows)
    if (row.mend) mend[row.file.index].rows.push(row);
    else if (!row.items.every((item) => item.card)) finish[row.file.index].rows.push(row);
  const shown = new Set(rows);
  const alike = cards.map((card) => ({
    key: card.key, card, rows: [...new Set(card.items.filter((item) => isSelected(item) && shown.has(item.row)).map((item) => item.row))],
  }));
  const parts = [['First: fix in the script and convert it again', mend], ['Then: what is alike in many lines', alike], ['Then: finish in the converted script', finish]];
  for (const part of parts) {
    part[1] = part[1].filter((group) => group.rows.length > 0);
    for (const group of part[1])
      group.open = groupsOpen.has(group.key) ? groupsOpen.get(group.key) : !group.card && rows.length <= rowsOpened;
  }
  return parts.filter(([, groups]) => groups.length > 0);
}

function showList(all) {
  const entries = [];
  if (view.file) {
    const group = { key: 'file', file: view.file, open: true };
    for (const row of view.file.rows) if (isShown(row)) entries.push({ row, group });
  } else {
    for (const [head, groups] of shownGroups()) {
      entries.push({ head });
      for (const group of groups) {
        entries.push({ group });
        if (group.open || all) for (const row of group.rows) entries.push({ row, group });
      }
    }
  }
  showEntries(entries);
  const before = at;
  setAt(before && (entries.find((entry) => isSameEntry(entry, before)) || null), false);
  $('empty').hidden = entries.length > 0;
  $('empty').textContent = allItems.length === 0 ? 'Nothing is left.' : 'Nothing passes this filter.';
}

function toggleGroup(entry) {
  setAt(entry, false);
  groupsOpen.set(entry.group.key, !entry.group.open);
  changeKeeping(entry, () => showList(false));
}

function openAll(open) {
  for (const entry of list.entries) if (entry.group && !entry.row) groupsOpen.set(entry.group.key, open);
  const rows = view.file ? view.file.rows : allRows;
  for (const row of rows) if (isShown(row)) { row.open = open ? 'all' : false; row.height = 0; }
  changeKeeping(at || shownElements()[0], () => showList(false));
}

// ---- Ways about ----

const fields = ['command', 'output', 'text']; // of the filters, as the address has them, too
let left = null; // where one was when a file was opened: the scroll offset and the cursor

function addressOf(place) {
  const words = new URLSearchParams();
  if (place.file) words.set('file', place.file.path);
  if (place.kinds.size > 0) words.set('kind', [...place.kinds].map((kind) => kinds[kind].word).join(','));
  for (const name of fields) if (place[name] !== '') words.set(name, place[name]);
  if (place.hideDone) words.set('hide', 'done');
  if (place.sort !== 'gravest' || place.up) words.set('sort', (place.up ? '-' : '') + place.sort);
  return words.toString();
}

// A page inside another may have no address of its own to write to.
function writeAddress(asStep) {
  const address = '#' + addressOf(view);
  if (address === (location.hash || '#')) return;
  try {
    if (asStep) location.hash = address; else history.replaceState(null, '', address);
  } catch (error) { /* the view stays as it is */ }
}

function readAddress() {
  const words = new URLSearchParams(location.hash.slice(1));
  const word = (name) => words.get(name) || '';
  view.kinds = new Set(word('kind').split(',').filter((kind) => kindNamed.has(kind)).map((kind) => kindNamed.get(kind)));
  view.command = word('command');
  view.output = outputs[word('output')] ? word('output') : '';
  view.text = word('text').toLowerCase();
  view.hideDone = word('hide') === 'done';
  view.up = word('sort').startsWith('-');
  view.sort = word('sort').replace('-', '') || 'gravest';
  return files.find((file) => file.path === word('file')) || null;
}

// Shows the rows of one file, or all of them: then one is back where one was.
function openFile(file, line) {
  if (file && !view.file) left = { y: scrollY, at };
  const back = !file && view.file ? left : null;
  view.file = file;
  writeAddress(true);
  at = back ? back.at : null;
  showView();
  const entry = line === undefined ? null : list.entries.find((other) => other.row && other.row.line === line);
  if (entry) {
    entry.row.open = 'alone';
    renew(entry);
    setAt(entry, true);
  } else {
    window.scrollTo(0, back ? back.y : 0);
  }
}

function stepFile(by) {
  const shown = shownFiles().map((row) => row.file);
  const i = view.file ? shown.indexOf(view.file) : -1;
  const next = i === -1 ? (by > 0 ? 0 : shown.length - 1) : i + by;
  if (shown[next]) openFile(shown[next]);
}

function showFileHead(file) {
  const shown = shownFiles().map((row) => row.file);
  const i = shown.indexOf(file);
  const output = outputs[file.output];
  $('file-head').replaceChildren(
    make('button', { type: 'button', id: 'back', title: 'Esc', onclick: () => openFile(null) }, '← All files'),
    make('h2', { class: 'path' }, file.path),
    make('button', { type: 'button', title: 'p', disabled: i === 0, onclick: () => stepFile(-1) }, '← Previous'),
    make('button', { type: 'button', title: 'n', disabled: i === shown.length - 1, onclick: () => stepFile(1) }, 'Next →'),
    make('p', { class: 'output' }, make('span', { class: 'path' }, file.outputPath), ': ', make('span', { class: 'kind ' + output.color }, output.label), ' ',
      output.title + '.' + (file.older ? ' It is older than its script.' : '')));
}

function showView() {
  $('overview').hidden = view.file !== null;
  $('file-head').hidden = view.file === null;
  if (view.file) showFileHead(view.file); else showMatrix();
  showKinds();
  showList(false);
}

function filterAgain() {
  writeAddress(false);
  showView();
}

function showFilters() {
  for (const name of fields) $(name).value = view[name];
  $('hide-done').checked = view.hideDone;
}

// The address was changed by hand or by the browser's own ways.
function followAddress() {
  if ((location.hash || '#') === '#' + addressOf(view)) return;
  const file = readAddress();
  showFilters();
  openFile(file);
}
