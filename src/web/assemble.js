// Puts the page together, when it is built:
//   node assemble.js OUTPUT VERSION PROGRAM FFLATE LICENCE...
// OUTPUT is the page, PROGRAM is murlreport as JavaScript with its .wasm beside it, FFLATE the folder of the zip library,
// and each LICENCE a text with licences of what is in the page.
'use strict';

const crypto = require('node:crypto');
const fs = require('node:fs');
const path = require('node:path');

const [output, version, ...parts] = process.argv.slice(2);
const [program, fflate, ...licences] = parts.map((name) => path.resolve(name));
const read = (...names) => fs.readFileSync(path.join(...names), 'utf8');
const own = (name) => read(__dirname, name);
const wasm = fs.readFileSync(program.replace(/\.js$/, '.wasm'));

// A text that goes between tags must not end them.
function inTag(text) {
  if (/<\/(script|style)|<!--/i.test(text)) throw new Error('a part of the page would end its tag');
  return text;
}

// A report's page, as the program writes it.
async function reportPage() {
  const { FS, callMain } = await require(program)({ wasmBinary: wasm, quit: (status, exit) => { throw exit; } });
  FS.writeFile('/script.mrl', 'LINE 0,0,0,1,1\n');
  callMain(['--quiet', '--html', '/page.html', '/script.mrl']);
  return FS.readFile('/page.html', { encoding: 'utf8' });
}

const partsOf = (page, tag) => [...page.matchAll(new RegExp('<' + tag + '>([^]*?)</' + tag + '>', 'g'))].map((match) => match[1]);
const hashes = (texts) => texts.map((text) => "'sha256-" + crypto.createHash('sha256').update(text).digest('base64') + "'").join(' ');

// The report is shown in a frame, which is under the page's policy beside its own: both have what it runs.
async function main() {
  const report = await reportPage();
  const css = inTag(partsOf(report, 'style')[0] + own('page.css'));
  const js = inTag(own('files.js') + own('page.js'));
  const values = {
    STYLES: hashes([css, ...partsOf(report, 'style')]),
    SCRIPTS: hashes([js, ...partsOf(report, 'script')]),
    CSS: css,
    JS: js,
    VERSION: version,
    LICENCES: licences.map((name) => read(name)).join('\n').replace(/[<&]/g, (sign) => '&#' + sign.charCodeAt(0) + ';'),
    WORKER: inTag([read(fflate, 'umd/index.js'), read(program), own('worker.js')].join('\n')),
    WASM: wasm.toString('base64'),
  };
  fs.writeFileSync(output, own('page.html').replace(/@([A-Z]+)@/g, (mark, name) => values[name]));
}

main().catch((error) => { console.error(error); process.exit(1); });
