/* A libcurl of a few functions, less those that a definition takes away. FAKE_CURL_FAIL in the
 * environment names the option, or "perform" or "init", that fails; what comes is "image". */
#include <stdarg.h>
#include <stddef.h>
#include <stdlib.h>
#include <string.h>

typedef size_t (*write_function)(const char* data, size_t size, size_t count, void* file);

static write_function writer;
static void* target;

static int fails(const char* what) {
    const char* failing = getenv("FAKE_CURL_FAIL");
    return failing != NULL && strcmp(failing, what) == 0;
}

#ifndef NO_VERSION
const char* curl_version(void) {
    return "fake";
}
#endif
#ifndef NO_GLOBAL_INIT
int curl_global_init(long flags) {
    return flags == 3 && !fails("global") ? 0 : 2;
}
#endif
#ifndef NO_EASY_INIT
void* curl_easy_init(void) {
    return fails("init") ? NULL : &target;
}
#endif
#ifndef NO_EASY_SETOPT
int curl_easy_setopt(void* curl, int option, ...) {
    (void)curl;
    const char* failing = getenv("FAKE_CURL_FAIL");
    if (failing != NULL && atoi(failing) == option) {
        return 48;
    }
    va_list arguments;
    va_start(arguments, option);
    if (option == 20011) {
        writer = va_arg(arguments, write_function);
    } else if (option == 10001) {
        target = va_arg(arguments, void*);
    }
    va_end(arguments);
    return option == 78 || option == 99 ? 48 : 0; /* those that needn't be known */
}
#endif
#ifndef NO_EASY_PERFORM
int curl_easy_perform(void* curl) {
    (void)curl;
    if (fails("url")) {
        return 3;
    }
    return writer("image", 1, 5, target) != 5 || fails("perform") ? 23 : 0;
}
#endif
#ifndef NO_EASY_CLEANUP
void curl_easy_cleanup(void* curl) {
    (void)curl;
}
#endif
#ifndef NO_GLOBAL_CLEANUP
void curl_global_cleanup(void) {}
#endif
