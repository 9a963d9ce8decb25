// Lets tests redirect and restore the standard error stream. To duplicate a file, programs of emscripten 3.1 open its
// path again, with all flags that it was first opened with.
Module['onRuntimeInitialized'] = () => {
    const {O_APPEND, O_CREAT, O_EXCL, O_TRUNC, O_WRONLY} = fs.constants;
    const file = fs.openSync('/dev/fd/2', 'a');
    Object.assign(FS.streams[2], {path: `/dev/fd/${file}`, flags: O_WRONLY | O_APPEND});
    const open = FS.open;
    FS.open = (...options) => {
        const stream = open(...options);
        stream.flags &= ~(O_CREAT | O_EXCL | O_TRUNC);
        return stream;
    };
};
