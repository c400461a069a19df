// Leaves the loader of the C library out of the portable programs. glibc loads modules that convert
// between character sets: its streams need them for wide characters, which these programs never
// use. With these two in the place of its own, the program holds nothing that could load a library
// of another host, and is smaller. The names and types are glibc's own (iconv/gconv_int.h).

// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" {

// Returns the module of this name: there is none.
void *__gconv_find_shlib(const char *name);
void *__gconv_find_shlib(const char * /*name*/) {
    return nullptr;
}

// Gives a module back.
void __gconv_release_shlib(void *module);
void __gconv_release_shlib(void * /*module*/) {}
}
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
