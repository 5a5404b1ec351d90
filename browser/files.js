// Before the program starts: a file that grows past what a page can hold is a full disk, not the end of the program.
Module['preRun'] = [].concat(Module['preRun'] || [], () => {
    const most = 2 ** 30;
    const full = 51;  // ENOSPC, as the program's C library counts
    for (const name of ['expandFileStorage', 'resizeFileStorage']) {
        const grow = MEMFS[name];
        MEMFS[name] = (node, size) => {
            if (size > most) throw new FS.ErrnoError(full);
            try {
                grow(node, size);
            } catch (error) {
                throw error instanceof RangeError ? new FS.ErrnoError(full) : error;
            }
        };
    }
});
