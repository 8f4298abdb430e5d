'use strict';

// ---- Scripts that come in, and conversions that go back ----
//
// What was picked or dropped is a gathering: files with their paths, the folders that they may be written back to,
// what the browser didn't deliver, and folders of which it may have hidden something. A path begins with the name of
// the folder that was picked, or is a script's name.

const isMemory = (path) => path.split('/').slice(0, -1).includes('.murlreport');
// Scripts, their outputs and copies of those; a converted script may be any of them.
const isWanted = (path) => isMemory(path) || /\.mr[lp]/i.test(path.slice(path.lastIndexOf('/') + 1));
// A name that isn't valid in the system's encoding comes with a replacement character, and leads nowhere.
const isSpelled = (path) => !/\p{Surrogate}|\ufffd/u.test(path);

function newGathering() {
  return { files: new Map(), folders: new Map(), missed: [], doubts: [] };
}

function takeFile(gathering, path, file) {
  if (!isSpelled(path)) gathering.missed.push(path + ': the browser can’t deliver this name');
  else if (!isWanted(path)) {
    if (!path.includes('/')) gathering.missed.push(path + ': neither .mrl nor .mrp');
  } else if (gathering.files.has(path)) gathering.missed.push(path + ': there are two of this name');
  else gathering.files.set(path, file);
}

// Reads a folder by its handle.
async function takeHandle(gathering, handle, path) {
  if (handle.kind === 'file') {
    if (isWanted(path) || !path.includes('/') || !isSpelled(path)) takeFile(gathering, path, await handle.getFile());
    return;
  }
  for await (const child of handle.values()) {
    if (child.name === '') gathering.missed.push(path + '/…: the browser can’t deliver a name in this folder');
    else await takeHandle(gathering, child, path + '/' + child.name);
  }
}

// Reads a folder by its handle. Such a handle hides names that some systems can't have, without a word; where
// the folder can also be listed by an entry, what is hidden is named.
async function takeFolder(gathering, handle, entry) {
  const name = handle.name || 'folder';
  gathering.folders.set(name, handle);
  await takeHandle(gathering, handle, name);
  try {
    for (const path of await pathsIn(entry))
      if (isWanted(path) && !gathering.files.has(path)) gathering.missed.push(path + ': the browser hides this name');
  } catch (error) {
    gathering.doubts.push(name + ': a browser hides names that some systems can’t have, such as a<b.mrl or con.mrl; scripts with such names are not converted');
  }
}

// The files in an entry, by their paths. Chromium lists none for a page that was opened from a file.
async function pathsIn(entry) {
  const paths = [];
  await walkEntry(entry, (file) => { paths.push(file.fullPath.slice(1)); });
  return paths;
}

// Calls a routine for each file in a dropped file or folder.
async function walkEntry(entry, visit) {
  if (entry.isFile) {
    await visit(entry);
    return;
  }
  const reader = entry.createReader();
  for (;;) {
    const some = await new Promise((resolve, reject) => { reader.readEntries(resolve, reject); });
    if (some.length === 0) return;
    for (const child of some) await walkEntry(child, visit);
  }
}

// Reads a dropped file or folder where there are no handles.
async function takeEntry(gathering, entry) {
  await walkEntry(entry, async (found) => {
    takeFile(gathering, found.fullPath.slice(1), await new Promise((resolve, reject) => { found.file(resolve, reject); }));
  });
}

// What was dropped. All that it holds must be asked for before the first wait.
async function gatherDrop(transfer) {
  const gathering = newGathering();
  const items = [...transfer.items].filter((item) => item.kind === 'file').map((item) => ({
    handle: item.getAsFileSystemHandle ? item.getAsFileSystemHandle() : Promise.resolve(null),
    entry: item.webkitGetAsEntry(),
    file: item.getAsFile(),
  }));
  for (const { handle, entry, file } of items) {
    const got = await handle.catch(() => null);
    if (got && got.kind === 'directory') await takeFolder(gathering, got, entry);
    else if (entry && entry.isDirectory) await takeEntry(gathering, entry);
    else if (file) takeFile(gathering, file.name, file);
  }
  return gathering;
}

// What a file field has.
function gatherFiles(list) {
  const gathering = newGathering();
  for (const file of list) takeFile(gathering, file.webkitRelativePath || file.name, file);
  return gathering;
}

async function gatherFolder(handle) {
  const gathering = newGathering();
  await takeFolder(gathering, handle, null);
  return gathering;
}

// The paths that the program gets: a folder by its name; several things, or scripts alone, as the folder of all.
function pathsOf(gathering) {
  const tops = new Set([...gathering.files.keys()].map((path) => path.split('/')[0]));
  const [top] = tops;
  return tops.size === 1 && !gathering.files.has(top) ? [top] : ['.'];
}

// True if everything can be written back to where it came from.
const canWriteBack = (gathering) => gathering.folders.size > 0 && [...gathering.files.keys()].every((path) => gathering.folders.has(path.split('/')[0]));

async function folderOf(gathering, path, create) {
  const names = path.split('/');
  let folder = gathering.folders.get(names[0]);
  for (const name of names.slice(1, -1)) folder = await folder.getDirectoryHandle(name, { create });
  return { folder, name: names[names.length - 1] };
}

// The file that is at a path now; null if there is none.
async function fileNow(gathering, path) {
  try {
    const { folder, name } = await folderOf(gathering, path, false);
    return await (await folder.getFileHandle(name)).getFile();
  } catch (error) {
    if (error.name === 'NotFoundError') return null;
    throw error;
  }
}

// A file that somebody has changed since it was read isn't written over.
async function checkUnchanged(gathering, path) {
  const before = gathering.files.get(path);
  const now = await fileNow(gathering, path);
  const same = before ? now && now.size === before.size && now.lastModified === before.lastModified : !now;
  if (!same) throw new Error('it has changed meanwhile; convert again');
}

// Writes what a run has changed back into its folders, in the order of the run's list, and stops at the first that
// fails: a memory must not speak of an output that wasn't written. Returns the number of files and the failure.
async function writeBack(gathering, result) {
  let count = 0;
  let path = '';
  try {
    for (const handle of gathering.folders.values())
      if (handle.requestPermission && await handle.requestPermission({ mode: 'readwrite' }) !== 'granted') throw new Error('the browser was not allowed to write');
    for (path of [...result.written.map((file) => file.path), ...result.removed]) await checkUnchanged(gathering, path);
    for (const file of result.written) {
      path = file.path;
      const { folder, name } = await folderOf(gathering, path, true);
      const handle = await folder.getFileHandle(name, { create: true });
      const stream = await handle.createWritable();
      await stream.write(file.blob);
      await stream.close();
      count++;
    }
    for (path of result.removed) {
      const { folder, name } = await folderOf(gathering, path, false);
      await folder.removeEntry(name);
    }
  } catch (error) {
    return { count, failure: (path ? path + ': ' : '') + error.message };
  }
  return { count, failure: null };
}
