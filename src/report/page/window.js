
// ---- A list of which only what is near the window is made ----

// Entries are shown in blocks. A block that is far away is empty and as high as it was, or will be by a guess.
const blockSize = 30;
const list = { root: $('list'), entries: [], blocks: [], watch: null };

const heightOf = (entry) => (entry.row || entry.group || entry).height || (entry.row && entry.row.open ? 320 : 42);

function fillBlock(block) {
  if (block.filled) return;
  block.filled = true;
  block.element.style.height = '';
  block.element.append(...block.entries.map((entry) => (entry.element = entryElement(entry))));
}

function emptyBlock(block) {
  if (!block.filled || block.element.contains(document.activeElement)) return;
  block.filled = false;
  for (const entry of block.entries) (entry.row || entry.group || entry).height = entry.element.offsetHeight;
  block.element.style.height = block.element.offsetHeight + 'px';
  block.element.replaceChildren();
  for (const entry of block.entries) entry.element = null;
}

function showEntries(entries) {
  if (list.watch) list.watch.disconnect();
  list.watch = new IntersectionObserver((changes) => {
    for (const change of changes) (change.isIntersecting ? fillBlock : emptyBlock)(change.target.block);
  }, { rootMargin: '1200px' });
  list.entries = entries;
  list.blocks = [];
  for (let from = 0; from < entries.length; from += blockSize) {
    const block = { element: make('div', { class: 'block' }), entries: entries.slice(from, from + blockSize), filled: false };
    block.element.block = block;
    block.element.style.height = block.entries.reduce((sum, entry) => sum + heightOf(entry), 0) + 'px';
    for (const entry of block.entries) entry.block = block;
    list.blocks.push(block);
  }
  list.root.replaceChildren(...list.blocks.map((block) => block.element));
  if (list.blocks.length > 0) fillBlock(list.blocks[0]);
  for (const block of list.blocks) list.watch.observe(block.element);
}

// The element of an entry, made if it isn't there.
function reach(entry) {
  fillBlock(entry.block);
  return entry.element;
}

const shownElements = () => list.entries.filter((entry) => entry.element);

const hasFocus = (element) => element.contains(document.activeElement);
const focusOn = (element) => element.querySelector('.toggle').focus({ preventScroll: true });

// Makes an entry's element anew, as the entry is now.
function renew(entry) {
  const old = entry.element;
  if (!old) return;
  const focused = hasFocus(old);
  entry.element = entryElement(entry);
  old.replaceWith(entry.element);
  if (focused) focusOn(entry.element);
}

// Changes the list and keeps an entry where it is in the window, as it is found in the new list.
function changeKeeping(entry, change) {
  const top = entry && entry.element ? entry.element.getBoundingClientRect().top : null;
  const focused = top !== null && hasFocus(entry.element);
  change();
  const now = top === null ? undefined : list.entries.find((other) => isSameEntry(other, entry));
  if (!now) return;
  window.scrollBy(0, reach(now).getBoundingClientRect().top - top);
  if (focused) focusOn(now.element);
}

const isSameEntry = (a, b) => a.row === b.row && (a.group ? a.group.key : a.head) === (b.group ? b.group.key : b.head);

// ---- The cursor, which the keys move ----

let at = null;

function setAt(entry, scroll) {
  if (at && at.element) at.element.classList.remove('at');
  at = entry;
  if (!entry) return;
  const element = scroll ? reach(entry) : entry.element;
  if (element) element.classList.add('at');
  if (scroll) element.scrollIntoView({ block: element.offsetHeight > innerHeight * 0.7 ? 'start' : 'center' });
}

// What the cursor stops at: rows, and groups that are closed or can be ticked.
const isStop = (entry) => entry.row !== undefined || (entry.group !== undefined && (!entry.group.open || entry.group.card !== undefined));

function step(by) {
  const { entries } = list;
  let i = at === null ? (by > 0 ? -1 : entries.length) : entries.indexOf(at);
  do i += by; while (i >= 0 && i < entries.length && !isStop(entries[i]));
  if (i >= 0 && i < entries.length) setAt(entries[i], true);
}
