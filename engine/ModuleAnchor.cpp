// The module is made of the static room alone; the build system wants one source of its own.
