// SPDX-License-Identifier: GPL-3.0-or-later
#include "server/TlsIdentity.h"

#include <openssl/ec.h>
#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <stdexcept>

namespace tidewright::demo {

namespace {

template <typename T> T *checked(T *object)
{
    if (!object) {
        throw std::runtime_error(std::string("TLS: ") + ERR_error_string(ERR_get_error(), nullptr));
    }
    return object;
}

EVP_PKEY *newKey()
{
    return checked(EVP_EC_gen("P-256"));
}

void addExtension(X509 *certificate, X509 *issuer, int id, const char *value)
{
    X509V3_CTX context;
    X509V3_set_ctx_nodb(&context);
    X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
    X509_EXTENSION *extension = checked(X509V3_EXT_conf_nid(nullptr, &context, id, value));
    X509_add_ext(certificate, extension, -1);
    X509_EXTENSION_free(extension);
}

X509 *newCertificate(const char *commonName, EVP_PKEY *key, long serial)
{
    X509 *certificate = checked(X509_new());
    X509_set_version(certificate, X509_VERSION_3);
    ASN1_INTEGER_set(X509_get_serialNumber(certificate), serial);
    X509_gmtime_adj(X509_getm_notBefore(certificate), -3600);
    X509_gmtime_adj(X509_getm_notAfter(certificate), 365L * 24 * 3600);
    X509_set_pubkey(certificate, key);
    X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate), "CN", MBSTRING_ASC,
        reinterpret_cast<const unsigned char *>(commonName), -1, -1, 0);
    return certificate;
}

void sign(X509 *certificate, X509 *issuer, EVP_PKEY *issuerKey)
{
    X509_set_issuer_name(certificate, X509_get_subject_name(issuer));
    if (X509_sign(certificate, issuerKey, EVP_sha256()) == 0) {
        checked<char>(nullptr);
    }
}

std::string pemOf(X509 *certificate)
{
    BIO *memory = checked(BIO_new(BIO_s_mem()));
    PEM_write_bio_X509(memory, certificate);
    char *data = nullptr;
    const long size = BIO_get_mem_data(memory, &data);
    const std::string text(data, size_t(size));
    BIO_free(memory);
    return text;
}

} // namespace

TlsIdentity::TlsIdentity()
{
    const std::unique_ptr<EVP_PKEY, Freer<EVP_PKEY_free>> authorityKey(newKey());
    const std::unique_ptr<X509, Freer<X509_free>> authority(
        newCertificate("demo authority", authorityKey.get(), 1));
    addExtension(authority.get(), authority.get(), NID_basic_constraints, "critical,CA:TRUE");
    addExtension(authority.get(), authority.get(), NID_key_usage, "critical,keyCertSign,cRLSign");
    sign(authority.get(), authority.get(), authorityKey.get());
    m_authority = pemOf(authority.get());

    m_key.reset(newKey());
    m_certificate.reset(newCertificate("demo cluster", m_key.get(), 2));
    addExtension(m_certificate.get(), authority.get(), NID_subject_alt_name, "IP:127.0.0.1,DNS:localhost");
    addExtension(m_certificate.get(), authority.get(), NID_ext_key_usage, "serverAuth");
    sign(m_certificate.get(), authority.get(), authorityKey.get());
}

} // namespace tidewright::demo
