# How everything is compiled for WebAssembly, for scripts to source. Exceptions and long jumps are the
# machine's own, registers hold 128 bits, and code can be loaded beside other code.
wasm_flags="-fPIC -msimd128 -fwasm-exceptions -sSUPPORT_LONGJMP=wasm"
# The compiler's own tools are written in JavaScript and stand where Debian's interpreter looks.
export NODE_PATH=/usr/share/nodejs
