// A script in the page's address: packed, behind the #, which browsers send nowhere.
const MARK = '#script=';

async function through(stream, bytes) {
    const answer = new Response(new Blob([bytes]).stream().pipeThrough(stream));
    return new Uint8Array(await answer.arrayBuffer());
}

// The fragment that holds an object.
export async function toAddress(shared) {
    const packed = await through(new CompressionStream('deflate-raw'), new TextEncoder().encode(JSON.stringify(shared)));
    const letters = btoa(Array.from(packed, byte => String.fromCharCode(byte)).join(''));
    return MARK + letters.replaceAll('+', '-').replaceAll('/', '_').replaceAll('=', '');
}

// The object in a fragment; null when there is none, or not a whole one.
export async function fromAddress(fragment) {
    if (!fragment.startsWith(MARK)) return null;
    try {
        const letters = fragment.slice(MARK.length).replaceAll('-', '+').replaceAll('_', '/');
        const packed = Uint8Array.from(atob(letters), letter => letter.charCodeAt(0));
        const {text, words} = JSON.parse(new TextDecoder().decode(await through(new DecompressionStream('deflate-raw'), packed)));
        return typeof text === 'string' && typeof words === 'string' ? {text, words} : null;
    } catch {
        return null;
    }
}
