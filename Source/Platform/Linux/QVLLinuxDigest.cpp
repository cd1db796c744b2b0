#include "QVLDigest.h"

#include <glib.h>

#include <memory>

QVLSHA1Digest QVLSHA1(std::string_view data) {
    const std::unique_ptr<GChecksum, decltype(&g_checksum_free)> checksum(g_checksum_new(G_CHECKSUM_SHA1),
                                                                          &g_checksum_free);
    g_checksum_update(checksum.get(), reinterpret_cast<const guchar*>(data.data()), static_cast<gssize>(data.size()));
    QVLSHA1Digest digest = {};
    gsize size = digest.size();
    g_checksum_get_digest(checksum.get(), digest.data(), &size);
    return digest;
}
