// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <openssl/evp.h>
#include <openssl/x509.h>

#include <memory>
#include <string>

namespace tidewright::demo {

/// A certificate for 127.0.0.1, signed by an authority that is made for it and forgotten: the kubeconfig
/// carries the authority's certificate. Valid for a year. Throws std::runtime_error when OpenSSL refuses.
class TlsIdentity
{
public:
    TlsIdentity();

    X509 *certificate() const { return m_certificate.get(); }
    EVP_PKEY *key() const { return m_key.get(); }

    /// PEM.
    const std::string &authority() const { return m_authority; }

private:
    template <auto Free> struct Freer
    {
        template <typename T> void operator()(T *object) const { Free(object); }
    };

    std::unique_ptr<X509, Freer<X509_free>> m_certificate;
    std::unique_ptr<EVP_PKEY, Freer<EVP_PKEY_free>> m_key;
    std::string m_authority;
};

} // namespace tidewright::demo
