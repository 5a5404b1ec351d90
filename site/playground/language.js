// The script language for the editor: its colours, and what can follow.
import {StreamLanguage, LanguageSupport} from '@codemirror/language';

const KEYWORDS = `AddHandler AddressOf And Array As Assigns Break ByRef ByVal Call Case Catch Class Const Constructor
    Continue CType Delegate Destructor Dim Do DownTo Each Else ElseIf End Enum Event Exception Exit Extends False Finally
    For Function Get Handles If Implements In Inherits Interface Is IsA Loop Me Mod Module New Next Nil Not Optional Or
    ParamArray Private Property Protected Public Raise RaiseEvent ReDim RemoveHandler Return Select Self Set Shared
    Static Step Sub Super Then To True Try Until Var Wend While Xor`.split(/\s+/);
const TYPES = `Integer Int8 Int16 Int32 Int64 UInt8 UInt16 UInt32 UInt64 Double Single Boolean String Color Variant
    Object`.split(/\s+/);

const lower = words => new Set(words.map(word => word.toLowerCase()));
const keywords = lower(KEYWORDS);
const types = lower(TYPES);
const atoms = lower(['True', 'False', 'Nil', 'Self', 'Me', 'Super']);

function token(stream, state) {
    if (stream.eatSpace()) return null;
    if (stream.match("'") || stream.match('//')) return stream.skipToEnd(), 'comment';
    if (stream.match(/^"(?:[^"]|"")*(?:"|$)/)) return 'string';
    if (stream.match(/^&(?:h[\da-f]+|b[01]+|o[0-7]+|c[\da-f]+)/i)) return 'number';
    if (stream.match(/^(?:\d+(?:\.\d+)?|\.\d+)(?:e[+-]?\d+)?/i)) return 'number';
    if (stream.match(/^#\w+/)) return 'meta';
    const word = stream.match(/^[a-z_]\w*/i);
    if (!word) return stream.next(), 'operator';
    const name = word[0].toLowerCase();
    const member = state.dot;
    state.dot = stream.peek() === '.';
    if (member) return 'propertyName';
    if (name === 'rem') return stream.skipToEnd(), 'comment';
    if (atoms.has(name)) return 'atom';
    if (keywords.has(name)) return 'keyword';
    return types.has(name) ? 'typeName' : 'variableName';
}

const language = StreamLanguage.define({
    name: 'script',
    startState: () => ({dot: false}),
    token,
    indent: (state, after, context) => (/^\s*(end|next|wend|loop|else|elseif|catch|finally|case)\b/i.test(after) ?
        null : context.lineIndent(context.pos, -1)),
    languageData: {commentTokens: {line: "'"}, closeBrackets: {brackets: ['(', '"']}},
});

const single = (list, name) => list.find(each => each.name.toLowerCase() === name.toLowerCase());

// What a class offers, its ancestors' members with it; overloads once.
function membersOf(classes, type, shared) {
    const options = new Map();
    const add = (kind, list) => {
        for (const {name, declaration, type: of} of list || [])
            if (!options.has(name) && name !== 'Constructor')
                options.set(name, {label: name, type: kind, detail: (declaration || `${name} As ${of}`).slice(name.length)});
    };
    for (let at = type; at; at = at.superclass && single(classes, at.superclass)) {
        add('constant', at.constants);
        add('method', at.sharedMethods);
        if (shared) continue;
        add('property', at.properties);
        add('method', at.methods);
    }
    return [...options.values()];
}

// The class that a name stands for, as the script declares it.
function typeOf(script, name) {
    const declared = new RegExp(`\\b${name}\\b(?:\\s*\\([^)]*\\))?(?:\\s*,\\s*\\w+)*\\s+As\\s+(?:New\\s+)?(\\w+)`, 'i').exec(script);
    return declared && declared[1];
}

// Completions from what the plug-in and the framework have registered.
export function completions({classes, functions}) {
    const everywhere = [
        ...classes.map(({name}) => ({label: name, type: 'class'})),
        ...functions.map(({name, declaration}) => ({label: name, type: 'function', detail: declaration.slice(name.length)})),
        ...KEYWORDS.map(label => ({label, type: 'keyword'})), ...TYPES.map(label => ({label, type: 'type'})),
    ].filter((option, i, all) => all.findIndex(({label}) => label === option.label) === i);
    const anyMember = classes.flatMap(each => membersOf(classes, each, false))
        .filter((option, i, all) => all.findIndex(({label}) => label === option.label) === i);

    return context => {
        const member = context.matchBefore(/(\w+)\.\w*$/);
        const word = context.matchBefore(/\w+/);
        const script = context.state.doc.toString();
        if (member) {
            const name = member.text.split('.')[0];
            const named = single(classes, name);
            const type = named || single(classes, typeOf(script, name) || '');
            const options = type ? membersOf(classes, type, Boolean(named)) : anyMember;
            return {from: member.from + name.length + 1, options, validFor: /^\w*$/};
        }
        if (context.matchBefore(/\.\w*$/)) return {from: word ? word.from : context.pos, options: anyMember, validFor: /^\w*$/};
        if (!word && !context.explicit) return null;
        const own = [...script.matchAll(/\b(?:Dim|Var|Static|Const)\s+(\w+)/gi)].map(([, label]) => ({label, type: 'variable'}));
        return {from: word ? word.from : context.pos, options: [...own, ...everywhere], validFor: /^\w*$/};
    };
}

export const script = new LanguageSupport(language);
