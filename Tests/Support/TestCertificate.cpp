#include "TestCertificate.h"

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <cstdio>
#include <memory>
#include <stdexcept>

namespace {

template <auto function>
struct CleanupWith {
    template <class Object>
    void operator()(Object* object) const {
        function(object);
    }
};
using Key = std::unique_ptr<EVP_PKEY, CleanupWith<EVP_PKEY_free>>;
using Certificate = std::unique_ptr<X509, CleanupWith<X509_free>>;
using Extension = std::unique_ptr<X509_EXTENSION, CleanupWith<X509_EXTENSION_free>>;
using File = std::unique_ptr<std::FILE, CleanupWith<std::fclose>>;

void require(bool condition) {
    if (!condition) {
        throw std::runtime_error("the test's certificate cannot be made");
    }
}

Certificate makeCertificate(const std::string& hostName, EVP_PKEY* key) {
    Certificate certificate(X509_new());
    X509_set_version(certificate.get(), X509_VERSION_3);
    ASN1_INTEGER_set(X509_get_serialNumber(certificate.get()), 1);
    X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -60);
    X509_gmtime_adj(X509_getm_notAfter(certificate.get()), 3600);
    X509_set_pubkey(certificate.get(), key);
    X509_NAME* const name = X509_get_subject_name(certificate.get());
    X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, reinterpret_cast<const unsigned char*>(hostName.c_str()), -1,
                               -1, 0);
    X509_set_issuer_name(certificate.get(), name);
    const std::string alternativeName = "DNS:" + hostName;
    const Extension extension(X509V3_EXT_conf_nid(nullptr, nullptr, NID_subject_alt_name, alternativeName.c_str()));
    X509_add_ext(certificate.get(), extension.get(), -1);
    require(X509_sign(certificate.get(), key, EVP_sha256()) != 0);
    return certificate;
}

} // namespace

TestCertificate::TestCertificate(const std::string& hostName) {
    const Key key(EVP_EC_gen("P-256"));
    require(key != nullptr);
    const Certificate certificate = makeCertificate(hostName, key.get());
    const File certificateFile(std::fopen(certificatePath().c_str(), "w"));
    require(certificateFile && PEM_write_X509(certificateFile.get(), certificate.get()));
    const File keyFile(std::fopen(keyPath().c_str(), "w"));
    require(keyFile && PEM_write_PrivateKey(keyFile.get(), key.get(), nullptr, nullptr, 0, nullptr, nullptr));
}
