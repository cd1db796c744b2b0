#include "QVLCurlLibrary.h"

#include <dlfcn.h>

namespace {

std::string lastLoadingError() {
    const char* const reason = dlerror(); // NOLINT(concurrency-mt-unsafe): glibc keeps it for each thread
    return std::string("libcurl could not be loaded: ") + (reason ? reason : "no reason given");
}

} // namespace

const QVLCurlLibrary& QVLCurlLibrary::shared() {
    static const QVLCurlLibrary library(QVL_CURL_FILE_NAME);
    return library;
}

QVLCurlLibrary::QVLCurlLibrary(const char* fileName) : m_loadingError(load(fileName)) {}

std::string QVLCurlLibrary::load(const char* fileName) {
    // Local, so that nothing else in the host finds its names in there.
    void* const library = dlopen(fileName, RTLD_NOW | RTLD_LOCAL);
    if (!library) {
        return lastLoadingError();
    }
#define QVL_FIND_FUNCTION(name)                                                                                        \
    name = reinterpret_cast<decltype(name)>(dlsym(library, "curl_" #name));                                            \
    if (!name) {                                                                                                       \
        return lastLoadingError();                                                                                     \
    }                                                                                                                  \
    static_assert(true)
    QVL_CURL_FUNCTIONS(QVL_FIND_FUNCTION);
#undef QVL_FIND_FUNCTION
    const CURLcode result = global_init(CURL_GLOBAL_DEFAULT);
    return result == CURLE_OK ? std::string()
                              : std::string("libcurl could not be initialised: ") + easy_strerror(result);
}
