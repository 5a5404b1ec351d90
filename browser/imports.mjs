// Tells what a module that is loaded at run time needs of the program that loads it:
// node imports.mjs MODULE, one name a line, as the linker spells it.
import {readFileSync} from 'node:fs';

const module = new WebAssembly.Module(readFileSync(process.argv[2]));
const ours = ['memory', '__indirect_function_table', '__stack_pointer', '__memory_base', '__table_base'];
const names = WebAssembly.Module.imports(module).map(each => each.name).filter(name => !ours.includes(name));
const own = new Set(WebAssembly.Module.exports(module).map(each => each.name));
console.log(JSON.stringify(['_main', ...new Set(names.filter(name => !own.has(name)).map(name => '_' + name))]));
