// The machine: a worker that runs scripts on files that the page hands it.
//
// Each run is a program started anew, in a file system of its own. Told {kind: 'run'}, it answers with
// {kind: 'printed'} for some lines at a time and at last {kind: 'ended'} with every file that the script
// wrote; told {kind: 'check'}, with {kind: 'checked'}. The page ends a run by ending the worker.
importScripts('tqx.js');

const FOLDER = '/pictures';
const FONTS = '/usr/share/fonts/truetype/dejavu';
const SCRIPT = 'script.rbs';

// A picture that browsers don't show, as one that they do.
const SHOW = `GetFolderItem(App.Arguments(1)).SaveAsPicture(GetFolderItem(App.Arguments(0)).OpenAsPicture)`;
const SHOWN = /\.(png|jpe?g|gif|webp|bmp)$/i;
const HIDDEN = /\.(tiff?|p[bgpn]m)$/i;

const fetched = path => fetch(path).then(answer => {
    if (!answer.ok) throw new Error(`${path}: ${answer.status}`);
    return answer.arrayBuffer();
});
const parts = Promise.all([fetched('tqx.wasm').then(bytes => WebAssembly.compile(bytes)),
                           fetched('PictureTQX.so'), fetched('PictureTQX.explain'), fetched('fonts.json')]);

// Files below the folder: their names and when each was written.
function listed(FS, folder = FOLDER, found = new Map()) {
    for (const name of FS.readdir(folder)) {
        if (name === '.' || name === '..') continue;
        const path = `${folder}/${name}`;
        const {mode, mtime} = FS.stat(path);
        if (FS.isDir(mode)) listed(FS, path, found);
        else found.set(path, mtime.getTime());
    }
    return found;
}

function write(FS, path, bytes) {
    FS.mkdirTree(path.slice(0, path.lastIndexOf('/')));
    FS.writeFile(path, new Uint8Array(bytes));
}

const fonts = new Map();

// A font's bytes, fetched when a script first draws with it.
function fontBytes(name) {
    if (!fonts.has(name)) {
        const request = new XMLHttpRequest();
        request.open('GET', `fonts/${name}`, false);
        request.responseType = 'arraybuffer';
        request.send();
        if (request.status !== 200) throw new Error(`${name}: ${request.status}`);
        fonts.set(name, new Uint8Array(request.response));
    }
    return fonts.get(name);
}

// The system's own lazy files can be read but not mapped, which is how fonts are opened.
function writeFont(FS, name) {
    write(FS, `${FONTS}/${name}`, []);
    Object.defineProperties(FS.lookupPath(`${FONTS}/${name}`).node, {
        contents: {get: () => fontBytes(name)},
        usedBytes: {get: () => fontBytes(name).length},
    });
}

// A program ready to be called, with its plug-in beside it and the page's files in its folder.
async function started(files, tell) {
    const [program, plugin, explain, fontNames] = await parts;
    const machine = await startTqx({
        instantiateWasm: (imports, receive) => {
            WebAssembly.instantiate(program, imports).then(instance => receive(instance, program));
            return {};
        },
        printed: (line, text) => tell({line, text}),
        print: text => tell({line: 0, text}),
        printErr: text => tell({line: 0, text, wrong: true}),
    });
    const {FS} = machine;
    write(FS, '/lib/tqx/PictureTQX.so', plugin);
    write(FS, '/lib/tqx/PictureTQX.explain', explain);
    for (const name of JSON.parse(new TextDecoder().decode(fontNames))) writeFont(FS, name);
    FS.mkdirTree(FOLDER);
    for (const {name, bytes} of files) write(FS, `${FOLDER}/${name}`, bytes);
    FS.chdir(FOLDER);
    return machine;
}

// A trap has ended the program: memory that a page can't have, or a fault of ours.
function call(machine, words, tell) {
    try {
        return machine.callMain(words);
    } catch (error) {
        tell({line: 0, text: `The program ended: ${error.message || error}`, wrong: true});
        return 1;
    }
}

function shownAs(machine, path) {
    const shown = `/shown/${path.replaceAll('/', '-')}.png`;
    write(machine.FS, '/shown/show.rbs', new TextEncoder().encode(SHOW));
    const code = call(machine, ['run', '/shown/show.rbs', path, shown], () => {});
    return code === 0 ? machine.FS.readFile(shown) : null;
}

function results(machine, before) {
    const written = [...listed(machine.FS)].filter(([path, time]) => before.get(path) !== time);
    return written.map(([path]) => ({
        name: path.slice(FOLDER.length + 1),
        bytes: machine.FS.readFile(path),
        picture: SHOWN.test(path) ? 'own' : HIDDEN.test(path) ? shownAs(machine, path) : null,
    }));
}

// Hands lines on a few times a second: a page that gets each by itself is busy with nothing else.
function gathered(send) {
    let lines = [];
    let sent = 0;
    const flush = () => {
        if (lines.length) send(lines);
        lines = [];
        sent = performance.now();
    };
    const tell = line => {
        lines.push(line);
        if (performance.now() - sent > 100) flush();
    };
    return {tell, flush};
}

async function run({script, words, files, explain}) {
    const {tell, flush} = gathered(lines => postMessage({kind: 'printed', lines}));
    const machine = await started(files, tell);
    write(machine.FS, `${FOLDER}/${SCRIPT}`, new TextEncoder().encode(script));
    const before = listed(machine.FS);
    const begin = performance.now();
    const code = call(machine, [explain ? 'explain' : 'run', SCRIPT, ...words], tell);
    const milliseconds = performance.now() - begin;
    flush();
    postMessage({kind: 'ended', code, milliseconds, files: results(machine, before)});
}

async function check({script}) {
    const lines = [];
    const machine = await started([], line => lines.push(line));
    write(machine.FS, `${FOLDER}/${SCRIPT}`, new TextEncoder().encode(script));
    call(machine, ['check', SCRIPT], line => lines.push(line));
    postMessage({kind: 'checked', script, lines});
}

async function members() {
    const lines = [];
    const machine = await started([], line => lines.push(line));
    call(machine, ['members'], line => lines.push(line));
    const [{classes}, {functions}] = JSON.parse(lines[0].text);
    postMessage({kind: 'ready', classes, functions});
}

const WORK = {run, check};
let last = members().catch(error => postMessage({kind: 'failed', text: String(error.message || error)}));
onmessage = ({data}) => {
    last = last.then(() => WORK[data.kind](data)).catch(error => {
        postMessage({kind: 'printed', lines: [{line: 0, text: String(error.message || error), wrong: true}]});
        postMessage({kind: 'ended', code: 1, milliseconds: 0, files: []});
    });
};
