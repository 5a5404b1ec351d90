// A library, but no plug-in.
extern "C" __attribute__((visibility("default"))) int SomethingElse() { return 1; }
