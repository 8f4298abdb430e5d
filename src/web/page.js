'use strict';

// ---- The page: takes scripts, has them converted, and hands back what came of it ----

const $ = (id) => document.getElementById(id);
const plural = (count, word) => count + ' ' + word + (count === 1 ? '' : 's');

const shownAtOnce = 20e6; // bytes of a report; a larger one stops the page for seconds
let job = null; // { worker, gathering, result }

function show(id) {
  for (const section of ['start', 'busy', 'outcome']) $(section).hidden = section !== id;
}

function showBusy(text) {
  show('busy');
  $('busy-text').textContent = text;
  $('progress').removeAttribute('value');
}

function endJob() {
  if (job) job.worker.terminate();
  job = null;
  if ($('report').src) URL.revokeObjectURL($('report').src);
  $('report').removeAttribute('src');
  $('report').hidden = true;
}

function listNotes(lines, open) {
  $('notes').hidden = lines.length === 0;
  $('notes').open = open;
  $('notes').firstElementChild.textContent = plural(lines.length, 'message');
  $('notes').lastElementChild.replaceChildren(...lines.map((line) => {
    const item = document.createElement('li');
    item.textContent = line;
    return item;
  }));
}

function showFailure(text, lines) {
  endJob();
  show('outcome');
  $('verdict').className = 'bad';
  $('verdict').textContent = text;
  for (const id of ['write', 'zip', 'again', 'show']) $(id).hidden = true;
  $('done').textContent = '';
  listNotes(lines, true);
  $('other').focus();
}

// ---- A run ----

function workerUrl() {
  return URL.createObjectURL(new Blob([$('worker').textContent], { type: 'text/javascript' }));
}

// Converts what was gathered. Each run has a worker of its own, so that the program starts from nothing and its
// memory goes back.
function convert(gathering) {
  endJob();
  if (gathering.files.size === 0) {
    showFailure('There are no scripts in that: no *.mrl or *.mrp.', [...gathering.missed, ...gathering.doubts]);
    return;
  }
  showBusy('Converting ' + plural(gathering.files.size, 'file') + ' …');
  const url = workerUrl();
  job = { worker: new Worker(url), gathering, result: null };
  URL.revokeObjectURL(url);
  job.worker.onmessage = ({ data }) => {
    if (data.progress !== undefined) $('progress').value = data.progress;
    else if (data.result) showResult(data.result);
    else if (data.zip) saveZip(data.zip);
    else showFailure(data.trouble, gathering.missed);
  };
  job.worker.onerror = (event) => showFailure('The converter could not be run: ' + event.message, gathering.missed);
  job.worker.postMessage({
    wasm: $('wasm').textContent,
    files: [...gathering.files].map(([path, file]) => ({ path, file })),
    paths: pathsOf(gathering),
    ticks: $('ticks').files[0] || null,
    options: document.querySelector('input[name=mode]:checked').value.split(' '),
  });
}

function verdictOf(result) {
  const { totals } = result;
  if (totals === null) return 'Nothing was converted.';
  const left = totals.scripts - totals.done;
  return plural(totals.scripts, 'script') + ': ' + (left === 0 ? 'nothing is left to do.' : 'in ' + left + ' of them something is left to do.');
}

function showReport() {
  $('report').src = URL.createObjectURL(job.result.html);
  $('report').hidden = false;
  $('show').hidden = true;
}

function showResult(result) {
  const { gathering } = job;
  const lines = [...gathering.missed, ...gathering.doubts, ...result.notes];
  job.result = result;
  show('outcome');
  $('verdict').className = result.status > 1 || gathering.missed.length > 0 ? 'bad' : '';
  $('verdict').textContent = verdictOf(result);
  $('write').hidden = !canWriteBack(gathering) || result.written.length === 0;
  $('write').textContent = 'Write ' + plural(result.written.length, 'file') + ' into the folder';
  $('zip').hidden = result.written.length === 0;
  $('again').hidden = gathering.folders.size === 0 || !canWriteBack(gathering);
  $('done').className = '';
  $('done').textContent = result.written.length === 0 ? 'No conversion has changed.' : '';
  listNotes(lines, result.status > 1 || gathering.missed.length > 0);
  $('show').hidden = true;
  if (result.html.size > shownAtOnce) {
    $('show').hidden = false;
    $('show').textContent = 'Show the report (' + Math.ceil(result.html.size / 1e6) + ' MB)';
  } else if (result.html.size > 0) showReport();
  for (const id of ['write', 'zip', 'other']) {
    if ($(id).hidden) continue;
    $(id).focus();
    break;
  }
}

// ---- What a run has made ----

function saveZip(blob) {
  const link = document.createElement('a');
  const [top] = job.gathering.folders.keys();
  link.href = URL.createObjectURL(blob);
  link.download = (top || 'scripts') + '_conv.zip';
  link.click();
  setTimeout(() => URL.revokeObjectURL(link.href), 60000);
  $('done').className = '';
  $('done').textContent = 'Saved ' + link.download + '. Unpack it where the scripts are.';
}

async function writeFolder() {
  $('write').disabled = true;
  const { count, failure } = await writeBack(job.gathering, job.result);
  $('write').disabled = false;
  $('done').className = failure ? 'bad' : '';
  $('done').textContent = 'Wrote ' + count + ' of ' + plural(job.result.written.length, 'file') + ' into the folder' + (failure ? ', then failed: ' + failure : '.');
  if (!failure) $('write').hidden = true;
}

async function gatherAgain() {
  const gathering = newGathering();
  for (const folder of job.gathering.folders.values()) await takeFolder(gathering, folder, null);
  return gathering;
}

// ---- Ways in ----

// Converts what a routine gathers.
async function start(gather) {
  showBusy('Reading …');
  try {
    convert(await gather());
  } catch (error) {
    showFailure('That can’t be read: ' + error.message, []);
  }
}

// A dialog that was closed is no failure.
async function pickFolder() {
  if (!window.showDirectoryPicker) {
    $('folder-field').click();
    return;
  }
  const handle = await window.showDirectoryPicker({ id: 'murlconv' }).catch(() => null);
  if (handle) start(() => gatherFolder(handle));
}

function fieldOf(id) {
  $(id).addEventListener('change', (event) => {
    const files = [...event.target.files];
    event.target.value = '';
    if (files.length > 0) start(async () => gatherFiles(files));
  });
}

function recallTheme() {
  try { return localStorage.getItem('murlreport-theme') || 'system'; } catch (error) { return 'system'; }
}

// For the report in its frame, the system has the frame's color scheme.
function setTheme(theme) {
  try { localStorage.setItem('murlreport-theme', theme); } catch (error) { /* it lasts as long as the page */ }
  const dark = theme === 'dark' || (theme === 'system' && matchMedia('(prefers-color-scheme: dark)').matches);
  document.documentElement.dataset.theme = dark ? 'dark' : 'light';
  document.documentElement.dataset.setting = theme;
  $('theme').textContent = 'Theme: ' + theme;
}

function nextTheme() {
  const themes = ['system', 'light', 'dark'];
  setTheme(themes[(themes.indexOf(document.documentElement.dataset.setting) + 1) % themes.length]);
}

function listenForDrops() {
  const over = (is) => (event) => {
    event.preventDefault();
    document.body.classList.toggle('over', is);
  };
  for (const name of ['dragenter', 'dragover']) document.addEventListener(name, over(true));
  document.addEventListener('dragleave', (event) => { if (event.relatedTarget === null) over(false)(event); });
  document.addEventListener('drop', (event) => {
    over(false)(event);
    if ($('busy').hidden) start(() => gatherDrop(event.dataTransfer));
  });
}

setTheme(recallTheme());
matchMedia('(prefers-color-scheme: dark)').addEventListener('change', () => setTheme(document.documentElement.dataset.setting));
listenForDrops();
fieldOf('folder-field');
fieldOf('files-field');
const clicks = {
  theme: nextTheme, 'pick-folder': pickFolder, 'pick-files': () => $('files-field').click(),
  stop: () => { endJob(); show('start'); }, other: () => { endJob(); show('start'); },
  zip: () => job.worker.postMessage({ zip: true }), write: writeFolder, show: showReport, again: () => start(gatherAgain),
};
for (const [id, act] of Object.entries(clicks)) $(id).addEventListener('click', act);
