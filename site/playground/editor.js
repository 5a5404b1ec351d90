// The editor: a script with its colours, completions, mistakes and, behind each line, what it printed last.
import {autocompletion, closeBrackets, closeBracketsKeymap, completionKeymap} from '@codemirror/autocomplete';
import {defaultKeymap, history, historyKeymap, indentWithTab} from '@codemirror/commands';
import {bracketMatching, HighlightStyle, indentOnInput, syntaxHighlighting} from '@codemirror/language';
import {lintGutter, setDiagnostics} from '@codemirror/lint';
import {EditorState, StateEffect, StateField} from '@codemirror/state';
import {Decoration, drawSelection, EditorView, highlightActiveLine, keymap, lineNumbers, WidgetType} from '@codemirror/view';
import {tags} from '@lezer/highlight';

import {completions, script} from './language.js';

// The pages' own colours, so that light and dark are theirs.
const colours = HighlightStyle.define([
    {tag: tags.keyword, color: 'var(--md-code-hl-keyword-color)'},
    {tag: tags.atom, color: 'var(--md-code-hl-constant-color)'},
    {tag: tags.string, color: 'var(--md-code-hl-string-color)'},
    {tag: tags.number, color: 'var(--md-code-hl-number-color)'},
    {tag: tags.comment, color: 'var(--md-code-hl-comment-color)'},
    {tag: tags.typeName, color: 'var(--md-code-hl-function-color)'},
    {tag: tags.meta, color: 'var(--md-code-hl-special-color)'},
]);

class Printed extends WidgetType {
    constructor(text) {
        super();
        this.text = text;
    }
    eq(other) {
        return other.text === this.text;
    }
    toDOM() {
        const span = document.createElement('span');
        span.className = 'playground-printed';
        span.textContent = this.text;
        return span;
    }
}

// Texts by line numbers; an edit takes them away.
const setPrinted = StateEffect.define();
const printed = StateField.define({
    create: () => Decoration.none,
    update(value, {docChanged, effects, state}) {
        let next = docChanged ? Decoration.none : value;
        for (const effect of effects) {
            if (!effect.is(setPrinted)) continue;
            const lines = [...effect.value].filter(([line]) => line >= 1 && line <= state.doc.lines);
            next = Decoration.set(lines.sort(([a], [b]) => a - b).map(([line, text]) =>
                Decoration.widget({widget: new Printed(text), side: 1}).range(state.doc.line(line).to)));
        }
        return next;
    },
    provide: field => EditorView.decorations.from(field),
});

export class Editor {
    // `changed` is told of every edit, `run` of the keys that run.
    constructor(parent, {changed, run}) {
        this.offered = () => null;
        const extensions = [
            lineNumbers(), lintGutter(), history(), drawSelection(), highlightActiveLine(), indentOnInput(),
            bracketMatching(), closeBrackets(), script, syntaxHighlighting(colours), printed,
            autocompletion({override: [context => this.offered(context)]}),
            EditorView.contentAttributes.of({'aria-label': 'Script'}),
            EditorView.updateListener.of(update => update.docChanged && changed()),
            keymap.of([{key: 'Mod-Enter', run: () => (run(), true)}, ...closeBracketsKeymap, ...completionKeymap,
                       ...defaultKeymap, ...historyKeymap, indentWithTab]),
        ];
        this.view = new EditorView({parent, state: EditorState.create({doc: '', extensions})});
    }

    get text() {
        return this.view.state.doc.toString();
    }
    set text(text) {
        this.view.dispatch({changes: {from: 0, to: this.view.state.doc.length, insert: text}});
    }

    offer(reference) {
        this.offered = completions(reference);
    }

    goTo(line) {
        const {doc} = this.view.state;
        const at = doc.line(Math.min(Math.max(line, 1), doc.lines)).from;
        this.view.dispatch({selection: {anchor: at}, effects: EditorView.scrollIntoView(at, {y: 'center'})});
        this.view.focus();
    }

    // What was printed last, by lines.
    showPrinted(texts) {
        this.view.dispatch({effects: setPrinted.of(texts)});
    }

    // Mistakes: {line, column, text, warning}.
    showMistakes(mistakes) {
        const {doc} = this.view.state;
        const once = mistakes.filter((one, i) => mistakes.findIndex(({line, text}) => line === one.line && text === one.text) === i);
        const places = once.filter(({line}) => line >= 1 && line <= doc.lines).map(({line, column, text, warning}) => {
            const {from, to} = doc.line(line);
            const at = Math.min(from + column - 1, to);
            const word = /^\w+/.exec(doc.sliceString(at, to));
            return {from: at, to: word ? at + word[0].length : to, severity: warning ? 'warning' : 'error', message: text};
        });
        this.view.dispatch(setDiagnostics(this.view.state, places));
    }
}
