// Runs the grammar over scripts: node check_grammar.mjs SCRIPT...
//
// Needs vscode-textmate and vscode-oniguruma (npm install, in a folder above
// this file; GRAMMAR_MODULES names another). Complains of strings that don't end on their line, of letters
// and digits that no rule takes, of words of the language that are taken for names, and of comments
// with a test's expectations that are not taken for comments. With --show the tokens are printed.
import fs from "node:fs";
import path from "node:path";
import { createRequire } from "node:module";

const require = createRequire(path.join(process.env.GRAMMAR_MODULES ?? import.meta.dirname, "x.js"));
const textmate = require("vscode-textmate");
const oniguruma = require("vscode-oniguruma");
const grammarFile = path.join(import.meta.dirname, "rbs.tmLanguage.json");

async function loadGrammar() {
    await oniguruma.loadWASM(fs.readFileSync(require.resolve("vscode-oniguruma/release/onig.wasm")).buffer);
    const registry = new textmate.Registry({
        onigLib: Promise.resolve({
            createOnigScanner: (patterns) => new oniguruma.OnigScanner(patterns),
            createOnigString: (text) => new oniguruma.OnigString(text),
        }),
        loadGrammar: async () => textmate.parseRawGrammar(fs.readFileSync(grammarFile, "utf8"), grammarFile),
    });
    return registry.loadGrammar("source.rbs");
}

const LANGUAGE = new Set(
    ("if then elseif else end select case for each next to downto step while wend do loop until exit continue " +
     "return try catch finally raise sub function class inherits dim static const as new byref paramarray shared " +
     "and or xor not mod is isa true false nil self super integer double string boolean color variant").split(" "));

// What is wrong with a token; empty for nothing.
function complaintOf(text, scope, before) {
    if (scope.startsWith("invalid")) return "not closed";
    if (scope === "source.rbs" && /[\p{L}\p{N}"']/u.test(text)) return "taken by no rule";
    if (/^' expect( \w+)?:/.test(text) && !scope.startsWith("comment")) return "not taken for a comment";
    const name = scope.startsWith("variable.other") || scope.startsWith("entity.name.function.call");
    if (name && LANGUAGE.has(text.toLowerCase()) && !before.endsWith(".")) return "taken for a name";
    return "";
}

const words = process.argv.slice(2);
const show = words[0] === "--show" && words.shift() !== undefined;
const grammar = await loadGrammar();
let complaints = 0;
for (const script of words) {
    let state = textmate.INITIAL;
    for (const [index, line] of fs.readFileSync(script, "utf8").split(/\r\n|\r|\n/).entries()) {
        const { tokens, ruleStack } = grammar.tokenizeLine(line, state);
        state = ruleStack;
        for (const token of tokens) {
            const text = line.slice(token.startIndex, token.endIndex);
            const scope = token.scopes[token.scopes.length - 1];
            if (show && text.trim()) console.log(`${index + 1}\t${text}\t${token.scopes.slice(1).join(" ")}`);
            const complaint = complaintOf(text, scope, line.slice(0, token.startIndex));
            if (!complaint) continue;
            console.error(`${script}:${index + 1}:${token.startIndex + 1}: ${complaint}: ${text} (${scope})`);
            ++complaints;
        }
    }
    if (state.depth > 1) {
        console.error(`${script}: ends within ${state}`);
        ++complaints;
    }
}
process.exit(complaints === 0 ? 0 : 1);
