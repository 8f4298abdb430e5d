
// ---- Ticks, rows and groups as elements ----

function entryElement(entry) {
  const element = entry.row ? rowElement(entry) : entry.group ? groupElement(entry) : make('h2', { class: 'head' }, entry.head);
  element.classList.toggle('at', entry === at);
  return element;
}

const itemsOf = (entry) => (entry.row ? entry.row.items : entry.group.card ? entry.group.card.items : []);

// A box is checked when all of its items are done, and can be used while one of them isn't settled.
function tickBox(entry, words) {
  const items = itemsOf(entry);
  const box = make('input', {
    type: 'checkbox', class: 'tick', disabled: items.every(isSettled), 'aria-label': 'done: ' + words,
    onchange: () => useTick(entry, box.checked),
  });
  box.checked = items.every(isDone);
  return box;
}

function useTick(entry, ticked) {
  tick(itemsOf(entry), ticked);
  showTicks();
}

function showTicks() {
  for (const other of shownElements()) {
    const box = other.element.querySelector('.tick');
    if (box === null) continue;
    box.checked = itemsOf(other).every(isDone);
    other.element.classList.toggle('done', box.checked);
    for (const chip of other.element.querySelectorAll('.kind')) chip.classList.toggle('done', isDone(chip.item));
  }
  showSummary();
  if (!view.file) showMatrix();
}

function kindChip(item) {
  const kind = kinds[item.kind];
  const chip = make('span', { class: 'kind ' + kind.color + (isDone(item) ? ' done' : ''), title: kind.title, 'data-kind': kind.word }, kind.label);
  chip.item = item;
  return chip;
}

const firstOfKinds = (row) => row.items.filter((item, i) => row.items.findIndex((other) => other.kind === item.kind) === i);

// One word for the states of a row's items, where they say anything.
function stateText(row) {
  const states = new Set(row.items.map((item) => (item.kind === informs ? 'for information' : item.state)));
  return [...states].filter((state) => state !== 'none' && state !== 'open').join(', ');
}

function toggleButton(open, words, toggle) {
  return make('button', { type: 'button', class: 'toggle', 'aria-expanded': open ? 'true' : 'false', 'aria-label': words, onclick: toggle }, open ? '▾' : '▸');
}

// A click on the head opens, unless it was meant for something in it or selected a text.
const opensBy = (toggle) => (event) => {
  if (!event.target.closest('input, button, a') && String(getSelection()) === '') toggle();
};

const fileLink = (file, text, line) => make('a', {
  class: 'path', href: '#' + addressOf({ ...view, file }), onclick: (event) => { event.preventDefault(); openFile(file, line); },
}, text);

function rowElement(entry) {
  const { row } = entry;
  const words = row.file.path + ':' + row.line;
  const toggle = () => toggleRow(entry);
  const inFile = entry.group.card === undefined;
  const done = row.items.every(isDone);
  const details = [...new Set(row.items.map((item) => item.detail))];
  return make('article', { class: 'item' + (done ? ' done' : '') + (row.open ? ' open' : '') },
    make('div', { class: 'line-head', onclick: opensBy(toggle) },
      toggleButton(row.open, words, toggle), tickBox(entry, words),
      make('span', { class: 'line' }, inFile ? String(row.line) : fileLink(row.file, words, row.line)),
      make('span', { class: 'kinds' }, ...firstOfKinds(row).map(kindChip)),
      make('span', { class: 'what' }, make('code', {}, row.statement), ' ', make('span', { class: 'detail' }, details.join('; '))),
      make('span', { class: 'state' }, stateText(row))),
    row.open ? rowBody(row) : null);
}

function toggleRow(entry) {
  setAt(entry, false);
  entry.row.open = entry.row.open ? false : 'alone';
  renew(entry);
}

function groupElement(entry) {
  const { group } = entry;
  const toggle = () => toggleGroup(entry);
  const counts = new Map();
  for (const row of group.rows) for (const item of row.items) counts.set(item.kind, (counts.get(item.kind) || 0) + 1);
  const title = group.card ? cardTitle(group) : [
    make('span', { class: 'name' }, fileLink(group.file, group.mend ? group.file.path : group.file.outputPath)),
    make('span', { class: 'counts' }, [...counts].sort(([a], [b]) => a - b).map(([kind, count]) => kinds[kind].label + ' (' + count + ')').join(', '))];
  const words = group.card ? kinds[group.card.kind].label + ' ' + group.card.command : group.file.path;
  return make('div', { class: 'group' + (group.card ? ' card' : '') + (group.card && group.card.items.every(isDone) ? ' done' : '') },
    make('div', { class: 'group-head', onclick: opensBy(toggle) }, toggleButton(group.open, words, toggle),
      group.card ? tickBox(entry, 'all of ' + words) : null, ...title));
}

function cardTitle({ card, rows }) {
  const same = card.items.every((item) => item.detail === card.items[0].detail);
  return [kindChip(card.items[0]), make('b', {}, card.command),
    make('span', { class: 'detail' }, (same ? '' : 'such as: ') + card.items[0].detail),
    make('span', { class: 'counts' }, plural(rows.length, 'time') + ' in ' + plural(new Set(rows.map((row) => row.file)).size, 'file'))];
}

// ---- What a row shows when it is open ----

// Lines under words that say what they are; those that isOwn doesn't take are context.
function sideCell(side, words, [from, texts], isOwn) {
  return make('figure', { class: 'side ' + side }, make('figcaption', {}, words), ...texts.map((text, i) =>
    make('div', { class: isOwn(from + i) ? 'text' : 'text context', 'data-line': from + i }, make('span', {}, text))));
}

function rowSides(row) {
  const body = bodyOf(row);
  if (!body) return make('p', { class: 'empty' }, 'The script or its output is too long for its lines to be shown here.');
  const [old, there, written] = body;
  const [hasThere, hasWritten] = [there, written].map(([, texts]) => texts.length > 0);
  const { output } = row.file;
  const right = make('div', { class: 'right' });
  if (hasThere)
    right.append(sideCell('there', (output === 'same' ? 'Output' : 'Output that is there') + ', line ' + there[0], there, () => true));
  else if (output !== 'none' && hasWritten)
    right.append(make('p', { class: 'empty' }, 'The output that is there has none of its lines.'));
  if (hasWritten)
    right.append(sideCell('written', 'What would be written, line ' + written[0], written, () => true));
  if (!hasThere && !hasWritten)
    right.append(make('p', { class: 'empty' }, 'Nothing is left of it in the output.'));
  return make('div', { class: 'sides' },
    sideCell('old', 'Script, line ' + row.line, old, (line) => line >= row.line && line <= row.lastLine), right);
}

function rowBody(row) {
  const first = firstOfKinds(row);
  const alone = row.open === 'alone'; // a row that was opened by itself shows the first of the guide's sections
  return make('div', { class: 'opened' }, rowSides(row),
    make('div', {}, make('h4', {}, 'What to do'), ...row.items.map((item) => make('p', {}, kindChip(item), ' ', item.detail, '. ',
      first.includes(item) ? kinds[item.kind].to_do : ''))),
    guideOf('The guide: ' + row.command, report.commands[row.command], alone && !row.mend),
    ...first.map(({ kind }, i) => guideOf('The guide: ' + kinds[kind].label, report.guide[kinds[kind].word], alone && row.mend && i === 0)),
    view.file ? null : make('p', {}, fileLink(row.file, 'All of ' + row.file.path, row.line)));
}

// ---- The guides ----

// The text of the guide with `code`, **strong** and the words of [links]: the pieces are text, code, strong, words,
// text, and so on, those that aren't there undefined.
const inline = (text) => text.split(/`([^`]*)`|\*\*([^*]*)\*\*|\[([^\]]*)\]\([^)]*\)/).map((piece, i) =>
  piece && (i % 4 === 1 ? make('code', {}, piece) : i % 4 === 2 ? make('b', {}, piece) : piece));

function paragraph(text) {
  if (!/^\s*- /.test(text)) return make('p', {}, ...inline(text.trim()));
  return make('ul', {}, ...text.trim().split(/\n?^- /m).filter(Boolean).map((line) => make('li', {}, ...inline(line))));
}

// The pieces are prose, the words of a fence, what it holds, prose, and so on.
function guideBlocks(text) {
  return text.split(/^```(.*)\n([^]*?)\n?^```$/m).flatMap((piece, i) => {
    if (i % 3 === 0) return piece.split(/\n\s*\n/).filter((part) => part.trim() !== '').map(paragraph);
    if (i % 3 === 2) return make('pre', {}, piece);
    const label = piece.replace('mrl', '').trim();
    return label === '' ? [] : make('div', { class: 'label' }, label);
  });
}

function guideOf(title, text, open) {
  if (text === undefined) return null;
  const body = make('div', { class: 'guide' });
  const fill = () => { if (body.childElementCount === 0) body.append(...guideBlocks(text)); };
  if (open) fill();
  return make('details', { open, ontoggle: fill }, make('summary', {}, title), body);
}
