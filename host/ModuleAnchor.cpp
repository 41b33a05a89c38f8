// The module consists of the static library alone, but the build system needs a source file for it.
