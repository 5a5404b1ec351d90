// The playground's page: what stands in it and how it speaks with the machine (worker.js).
import {Editor} from './editor.js';
import {fromAddress, toAddress} from './address.js';

const PHOTO = 'photo.jpg';
const MOST_LINES = 2000;  // shown of what a script prints
const base = new URL('.', document.currentScript.src);

function element(tag, attributes = {}, ...children) {
    const made = document.createElement(tag);
    for (const [name, value] of Object.entries(attributes))
        if (name.startsWith('on')) made.addEventListener(name.slice(2), value);
        else if (value !== false) made.setAttribute(name, value === true ? '' : value);
    made.append(...children);
    return made;
}

// Words as a shell would split them: blanks part, quotes hold together.
const wordsIn = text => [...text.matchAll(/"([^"]*)"|(\S+)/g)].map(([, quoted, plain]) => quoted ?? plain);

const sized = bytes => (bytes < 1e6 ? `${Math.ceil(bytes / 1e3)} kB` : `${(bytes / 1e6).toFixed(1)} MB`);

// Formats that the machine reads by itself, by how files of them begin.
const READ = [/^\xFF\xD8\xFF/, /^\x89PNG/, /^GIF8/, /^BM/, /^RIFF....WEBP/s, /^II\*\0/, /^MM\0\*/, /^P[1-6]\s/];

// A file's bytes; of a format that only the browser knows, as a PNG of what it shows.
async function pictureBytes(file) {
    const bytes = await file.arrayBuffer();
    const head = String.fromCharCode(...new Uint8Array(bytes.slice(0, 16)));
    if (READ.some(format => format.test(head))) return bytes;
    const image = await createImageBitmap(file);
    const canvas = new OffscreenCanvas(image.width, image.height);
    canvas.getContext('2d').drawImage(image, 0, 0);
    return (await canvas.convertToBlob({type: 'image/png'})).arrayBuffer();
}

class Playground {
    constructor(root) {
        this.root = root;
        this.found = [];  // mistakes that the last run met in the script as it stands
        this.build();
        this.editor = new Editor(this.place, {changed: () => this.edited(), run: () => this.run()});
        this.startMachine();
        this.opened = this.open();
    }

    // --- What stands on the page -----------------------------------------------------------------

    build() {
        this.menu = element('select', {'aria-label': 'Examples', onchange: () => this.choose(this.menu.value)});
        this.words = element('input', {'aria-label': 'Arguments', spellcheck: 'false', placeholder: 'Arguments'});
        this.runButton = element('button', {type: 'button', class: 'primary', disabled: true, onclick: () => this.run()}, 'Run');
        this.stopButton = element('button', {type: 'button', disabled: true, onclick: () => this.stop()}, 'Stop');
        this.shareButton = element('button', {type: 'button', onclick: () => this.share()}, 'Copy link');
        this.explain = element('input', {type: 'checkbox'});
        this.status = element('p', {class: 'status', role: 'status'}, 'Loading the machine…');
        this.place = element('div', {class: 'editor'});
        this.printed = element('ol', {class: 'printed', 'aria-label': 'Output'});
        this.results = element('div', {class: 'results'});
        this.photo = element('img', {alt: 'The photograph'});
        this.photoText = element('span');
        const file = element('input', {type: 'file', accept: 'image/*', onchange: () => this.take(file.files[0])});
        const photo = element('label', {class: 'photo'}, this.photo, element('span', {}, element('strong', {}, PHOTO), ' ',
            this.photoText, element('br'), 'Drop another here, or choose one. It stays in this page.'), file);
        this.root.replaceChildren(
            element('div', {class: 'bar'}, this.menu, this.words, this.runButton, this.stopButton, this.shareButton,
                element('label', {title: 'Says why members refuse; scripts take longer'}, this.explain, ' Explain')),
            this.place, this.status, this.printed, this.results, photo);
        this.root.addEventListener('dragover', event => event.preventDefault());
        this.root.addEventListener('drop', event => {
            event.preventDefault();
            this.take(event.dataTransfer.files[0]);
        });
    }

    say(text, wrong = false) {
        this.status.textContent = text;
        this.status.classList.toggle('wrong', wrong);
    }

    // --- Scripts ---------------------------------------------------------------------------------

    async open() {
        const [scripts, photo] = await Promise.all([fetch(new URL('scripts.json', base)).then(answer => answer.json()),
                                                    fetch(new URL(PHOTO, base)).then(answer => answer.blob())]);
        this.scripts = scripts;
        for (const group of new Set(scripts.map(each => each.group)))
            this.menu.append(element('optgroup', {label: group}, ...scripts.filter(each => each.group === group)
                .map(({name, title}) => element('option', {value: name, title}, name))));
        await this.take(photo);
        const shared = await fromAddress(location.hash);
        if (shared) this.show(shared);
        else this.choose('gamma.rbs');
    }

    choose(name) {
        const found = this.scripts.find(each => each.name === name);
        this.menu.value = name;
        this.show(found);
    }

    show({text, words}) {
        this.editor.text = text;
        this.words.value = words;
    }

    async share() {
        const shared = await toAddress({text: this.editor.text, words: this.words.value});
        history.replaceState(null, '', shared);
        await navigator.clipboard?.writeText(location.href).catch(() => {});
        this.say('The script is in the page’s address, and that is copied.');
    }

    async take(file) {
        if (!file) return;
        try {
            this.photoBytes = await pictureBytes(file);
        } catch {
            return this.say(`${file.name} is no picture that the machine or this browser can read.`, true);
        }
        URL.revokeObjectURL(this.photo.src);
        this.photo.src = URL.createObjectURL(file);
        this.photo.onload = () => {
            this.photoText.textContent = `${this.photo.naturalWidth} × ${this.photo.naturalHeight}`;
        };
    }

    // --- The machine -----------------------------------------------------------------------------

    startMachine() {
        this.worker = new Worker(new URL('worker.js', base));
        this.worker.onerror = event => this.say(event.message || 'The machine can’t be started.', true);
        this.worker.onmessage = ({data}) => this[`on_${data.kind}`](data);
        this.ready = false;
    }

    on_ready({classes, functions}) {
        this.ready = true;
        this.editor.offer({classes, functions});
        this.runButton.disabled = false;
        this.say('Ready. Ctrl-Enter runs the script.');
        this.check();
    }

    on_failed({text}) {
        this.say(text, true);
    }

    edited() {
        this.found = [];
        clearTimeout(this.waiting);
        this.waiting = setTimeout(() => this.check(), 600);
    }

    check() {
        if (this.ready && !this.running) this.worker.postMessage({kind: 'check', script: this.editor.text});
    }

    on_checked({script, lines}) {
        if (script === this.editor.text) this.editor.showMistakes([...this.found, ...mistakesIn(lines)]);
    }

    run() {
        if (!this.ready || this.running) return;
        this.setRunning(true);
        this.lines = [];
        this.texts = new Map();
        this.printed.replaceChildren();
        this.clearResults();
        this.editor.showPrinted([]);
        const files = [PHOTO, `photos/${PHOTO}`].map(name => ({name, bytes: this.photoBytes}));
        this.worker.postMessage({kind: 'run', script: this.editor.text, words: wordsIn(this.words.value), files,
            explain: this.explain.checked});
        this.began = performance.now();
        this.clock = setInterval(() => this.say(`Running: ${((performance.now() - this.began) / 1000).toFixed(0)} s`), 1000);
        this.say('Running…');
    }

    setRunning(running) {
        this.running = running;
        this.runButton.disabled = running;
        this.stopButton.disabled = !running;
        if (!running) clearInterval(this.clock);
    }

    stop() {
        this.worker.terminate();
        this.setRunning(false);
        this.runButton.disabled = true;
        this.startMachine();
        this.say('Stopped.');
    }

    on_printed({lines}) {
        const room = MOST_LINES - this.lines.length;
        this.printed.append(...lines.slice(0, Math.max(room, 0)).map(line => this.printedLine(line)));
        this.lines.push(...lines);
        for (const {line, text} of lines) if (line) this.texts.set(line, text.length > 60 ? `${text.slice(0, 60)}…` : text);
        this.editor.showPrinted(this.texts);
    }

    printedLine({line, text, wrong}) {
        const [mistake] = mistakesIn([{text, wrong}]);
        const at = line || (mistake && mistake.line);
        const place = at ? element('button', {type: 'button', title: `Line ${at}`, onclick: () => this.editor.goTo(at)}, `${at}`) : '';
        return element('li', {class: wrong ? 'wrong' : ''}, place, element('code', {}, text));
    }

    on_ended({code, milliseconds, files}) {
        this.setRunning(false);
        this.found = mistakesIn(this.lines);
        this.editor.showMistakes(this.found);
        const hidden = this.lines.length - MOST_LINES;
        if (hidden > 0) this.printed.append(element('li', {}, element('code', {}, `… and ${hidden} more lines`)));
        this.results.append(...files.map(file => this.result(file)));
        this.say(`${code === 0 ? 'Done' : `Ended with ${code}`} after ${(milliseconds / 1000).toFixed(2)} s.`, code !== 0);
        this.root.dispatchEvent(new CustomEvent('ended', {detail: {code, milliseconds, files, lines: this.lines}}));
    }

    clearResults() {
        for (const image of this.results.querySelectorAll('img')) URL.revokeObjectURL(image.src);
        for (const link of this.results.querySelectorAll('a')) URL.revokeObjectURL(link.href);
        this.results.replaceChildren();
    }

    result({name, bytes, picture}) {
        const link = URL.createObjectURL(new Blob([bytes]));
        const save = element('a', {href: link, download: name.split('/').pop(), class: 'save'}, `Save ${name}`);
        const caption = element('figcaption', {}, save, ` ${sized(bytes.length)}`);
        if (!picture) return element('figure', {}, caption);
        const source = URL.createObjectURL(new Blob([picture === 'own' ? bytes : picture]));
        return element('figure', {}, element('img', {src: source, alt: `The script’s result, ${name}`}), caption);
    }
}

// What is said about places of the script: {line, column, text, warning}.
function mistakesIn(lines) {
    return lines.filter(({wrong}) => wrong).flatMap(({text}) => {
        const place = /^script\.rbs:(\d+):(\d+): (warning: )?(.*)/.exec(text);
        return place ? [{line: Number(place[1]), column: Number(place[2]), warning: Boolean(place[3]), text: place[4]}] : [];
    });
}

const root = document.getElementById('tqx-playground');
if (root && location.protocol === 'file:')
    root.textContent = 'Browsers run nothing of the kind on pages that they read from a disk. Let a server hand them out: ' +
        'python3 -m http.server --directory build/site';
else if (root) root.playground = new Playground(root);
