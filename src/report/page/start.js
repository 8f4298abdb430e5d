
// ---- Keys, buttons, and the start ----

const framed = parent !== window; // by the page that converts: its button is for both, and the frame's system is its theme
const themeNow = () => (!framed && recall('murlreport-theme')) || 'system';

function setTheme(theme) {
  if (!framed) remember('murlreport-theme', theme === 'system' ? null : theme);
  const dark = theme === 'dark' || (theme === 'system' && matchMedia('(prefers-color-scheme: dark)').matches);
  document.documentElement.dataset.theme = dark ? 'dark' : 'light';
  $('theme').textContent = 'Theme: ' + theme;
}

function nextTheme() {
  const themes = ['system', 'light', 'dark'];
  if (!framed) setTheme(themes[(themes.indexOf(themeNow()) + 1) % themes.length]);
}

const keys = {
  j: () => step(1),
  k: () => step(-1),
  x: () => { if (at && !itemsOf(at).every(isSettled)) useTick(at, !itemsOf(at).every(isDone)); },
  Enter: () => { if (at) (at.row ? toggleRow : toggleGroup)(at); },
  o: () => openAll(true),
  c: () => openAll(false),
  f: () => { if (at && !view.file && (at.row || at.group.file)) openFile((at.row || at.group).file, at.row && at.row.line); },
  n: () => stepFile(1),
  p: () => stepFile(-1),
  t: nextTheme,
  Escape: () => { if (view.file) openFile(null); },
  '/': () => $('text').focus(),
  '?': () => $('help').showModal(),
};

function onKey(event) {
  if (event.ctrlKey || event.metaKey || event.altKey || $('help').open) return;
  const target = event.target;
  if (/^(INPUT|SELECT|TEXTAREA)$/.test(target.tagName) && target.type !== 'checkbox') {
    if (event.key === 'Escape') target.blur();
    return;
  }
  if (event.key === 'Enter' && target.closest('button, a, summary, input')) return;
  if (!Object.hasOwn(keys, event.key)) return;
  event.preventDefault();
  keys[event.key]();
}

function clearFilters() {
  Object.assign(view, { kinds: new Set(), command: '', output: '', text: '', hideDone: false });
  showFilters();
  filterAgain();
}

// On paper groups are open, rows as they are, and nothing is left out for being far away.
function showForPrint() {
  showList(true);
  list.watch.disconnect();
  list.blocks.forEach(fillBlock);
}

function start() {
  $('theme').hidden = framed;
  setTheme(themeNow());
  matchMedia('(prefers-color-scheme: dark)').addEventListener('change', () => setTheme(themeNow()));
  const clicks = {
    theme: nextTheme, 'help-button': () => $('help').showModal(), save: saveTicks, 'open-all': () => openAll(true), 'close-all': () => openAll(false), clear: clearFilters,
    gravest: () => { view.sort = 'gravest'; view.up = false; filterAgain(); },
  };
  for (const [id, act] of Object.entries(clicks)) $(id).addEventListener('click', act);
  fillSelect($('command'), allRows.map((row) => row.command), (word) => word);
  fillSelect($('output'), files.map((file) => file.output), (word) => outputs[word].label);
  for (const name of fields)
    $(name).addEventListener('input', (event) => { view[name] = name === 'text' ? event.target.value.trim().toLowerCase() : event.target.value; filterAgain(); });
  $('hide-done').addEventListener('change', (event) => { view.hideDone = event.target.checked; filterAgain(); });
  document.addEventListener('keydown', onKey);
  window.addEventListener('hashchange', followAddress);
  window.addEventListener('storage', () => { readTicks(); showTicks(); });
  window.addEventListener('beforeprint', showForPrint);
  window.addEventListener('afterprint', () => showList(false));
  view.file = readAddress();
  showFilters();
  showSummary();
  showView();
}

start();
