#pragma once

#include <curl/curl.h>

#include <string>

/// What is called of libcurl. Without its prefix, since that makes a macro of some.
#define QVL_CURL_FUNCTIONS(function)                                                                                   \
    function(easy_cleanup);                                                                                            \
    function(easy_getinfo);                                                                                            \
    function(easy_init);                                                                                               \
    function(easy_setopt);                                                                                             \
    function(easy_strerror);                                                                                           \
    function(global_init);                                                                                             \
    function(multi_add_handle);                                                                                        \
    function(multi_cleanup);                                                                                           \
    function(multi_info_read);                                                                                         \
    function(multi_init);                                                                                              \
    function(multi_perform);                                                                                           \
    function(multi_poll);                                                                                              \
    function(multi_remove_handle);                                                                                     \
    function(multi_setopt);                                                                                            \
    function(multi_wakeup);                                                                                            \
    function(slist_append);                                                                                            \
    function(slist_free_all)

/// libcurl, opened by name instead of linked: with all that it needs itself it takes milliseconds to load, which a
/// process that sends nothing is spared.
///
/// Immutable once made; any thread. What was loaded stays until the process ends.
class QVLCurlLibrary final {
public:
    /// The one that this code was built with, loaded by the first call.
    [[nodiscard]] static const QVLCurlLibrary& shared();

    explicit QVLCurlLibrary(const char* fileName);
    QVLCurlLibrary(const QVLCurlLibrary&) = delete;
    QVLCurlLibrary& operator=(const QVLCurlLibrary&) = delete;

    /// Why no function may be called; empty when all may be.
    [[nodiscard]] const std::string& loadingError() const { return m_loadingError; }

#define QVL_DECLARE_FUNCTION(name) decltype(&curl_##name) name = nullptr
    QVL_CURL_FUNCTIONS(QVL_DECLARE_FUNCTION);
#undef QVL_DECLARE_FUNCTION

private:
    [[nodiscard]] std::string load(const char* fileName);

    std::string m_loadingError;
};
