#include "http/sim_certificate_authority.h"

#include <openssl/bn.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include <QDir>
#include <memory>

namespace tolvane::sim {

namespace {

using KeyPtr = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
using CertPtr = std::unique_ptr<X509, decltype(&X509_free)>;
using BioPtr = std::unique_ptr<BIO, decltype(&BIO_free)>;
using BnPtr = std::unique_ptr<BIGNUM, decltype(&BN_free)>;
using ExtPtr = std::unique_ptr<X509_EXTENSION, decltype(&X509_EXTENSION_free)>;

constexpr long kValiditySeconds = 30L * 24 * 3600;

// P-256 keys take milliseconds to make, where RSA would slow every sanitizer run.
KeyPtr makeKey() {
    return KeyPtr(EVP_PKEY_Q_keygen(nullptr, nullptr, "EC", "P-256"), EVP_PKEY_free);
}

bool addExtension(X509* cert, X509V3_CTX* context, int nid, const char* value) {
    ExtPtr extension(X509V3_EXT_nconf_nid(nullptr, context, nid, value), X509_EXTENSION_free);
    return extension && X509_add_ext(cert, extension.get(), -1) == 1;
}

bool setRandomSerial(X509* cert) {
    BnPtr serial(BN_new(), BN_free);
    return serial && BN_rand(serial.get(), 63, BN_RAND_TOP_ANY, BN_RAND_BOTTOM_ANY) == 1 &&
           BN_to_ASN1_INTEGER(serial.get(), X509_get_serialNumber(cert)) != nullptr;
}

struct CertRequest {
    const char* commonName;
    bool authority;          // may sign other certificates
    const char* altNames;    // subjectAltName value, or null
    X509* issuer;            // null: self-signed
    EVP_PKEY* issuerKey;     // null: self-signed
    long notBefore = -3600;  // seconds from now
    long notAfter = kValiditySeconds;
};

CertPtr makeCertificate(EVP_PKEY* key, const CertRequest& request) {
    CertPtr cert(X509_new(), X509_free);
    if (!cert || X509_set_version(cert.get(), 2) != 1 || !setRandomSerial(cert.get()) ||
        X509_gmtime_adj(X509_getm_notBefore(cert.get()), request.notBefore) == nullptr ||
        X509_gmtime_adj(X509_getm_notAfter(cert.get()), request.notAfter) == nullptr ||
        X509_set_pubkey(cert.get(), key) != 1) {
        return CertPtr(nullptr, X509_free);
    }
    X509_NAME* name = X509_get_subject_name(cert.get());
    const auto* organisation = reinterpret_cast<const unsigned char*>("Tolvane Simulator");
    const auto* commonName = reinterpret_cast<const unsigned char*>(request.commonName);
    if (X509_NAME_add_entry_by_txt(name, "O", MBSTRING_ASC, organisation, -1, -1, 0) != 1 ||
        X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, commonName, -1, -1, 0) != 1) {
        return CertPtr(nullptr, X509_free);
    }
    X509* issuer = request.issuer != nullptr ? request.issuer : cert.get();
    EVP_PKEY* signingKey = request.issuerKey != nullptr ? request.issuerKey : key;
    if (X509_set_issuer_name(cert.get(), X509_get_subject_name(issuer)) != 1) {
        return CertPtr(nullptr, X509_free);
    }
    X509V3_CTX context;
    X509V3_set_ctx_nodb(&context);
    X509V3_set_ctx(&context, issuer, cert.get(), nullptr, nullptr, 0);
    bool ok = addExtension(cert.get(), &context, NID_subject_key_identifier, "hash");
    if (request.authority) {
        ok = ok && addExtension(cert.get(), &context, NID_basic_constraints, "critical,CA:TRUE") &&
             addExtension(cert.get(), &context, NID_key_usage, "critical,keyCertSign,cRLSign");
    } else {
        ok = ok && addExtension(cert.get(), &context, NID_basic_constraints, "critical,CA:FALSE") &&
             addExtension(cert.get(), &context, NID_key_usage,
                          "critical,digitalSignature,keyEncipherment") &&
             addExtension(cert.get(), &context, NID_ext_key_usage, "serverAuth");
    }
    if (request.issuer != nullptr) {
        ok = ok && addExtension(cert.get(), &context, NID_authority_key_identifier, "keyid");
    }
    if (request.altNames != nullptr) {
        ok = ok && addExtension(cert.get(), &context, NID_subject_alt_name, request.altNames);
    }
    if (!ok || X509_sign(cert.get(), signingKey, EVP_sha256()) == 0) {
        return CertPtr(nullptr, X509_free);
    }
    return cert;
}

bool writeCertificate(const std::string& path, X509* cert) {
    BioPtr bio(BIO_new_file(path.c_str(), "w"), BIO_free);
    return bio && PEM_write_bio_X509(bio.get(), cert) == 1;
}

bool writeKey(const std::string& path, EVP_PKEY* key) {
    BioPtr bio(BIO_new_file(path.c_str(), "w"), BIO_free);
    return bio &&
           PEM_write_bio_PrivateKey(bio.get(), key, nullptr, nullptr, 0, nullptr, nullptr) == 1;
}

const char kServerNames[] = "IP:127.0.0.1,DNS:localhost";
const char kOtherHostNames[] = "DNS:elsewhere.tolvane.example";
constexpr long kDay = 24L * 3600;

}  // namespace

SimCertificateAuthority::SimCertificateAuthority()
    : dir_(QDir::tempPath() + QStringLiteral("/tolvane-sim-ca-XXXXXX")) {
    valid_ = dir_.isValid() && generate();
}

std::string SimCertificateAuthority::folder() const {
    return dir_.path().toStdString();
}

std::string SimCertificateAuthority::filePath(const char* name) const {
    return folder() + "/" + name;
}

std::string SimCertificateAuthority::caFile() const {
    return filePath("ca.pem");
}

SimTlsIdentity SimCertificateAuthority::trustedIdentity() const {
    return {filePath("server.pem"), filePath("server-key.pem")};
}

SimTlsIdentity SimCertificateAuthority::selfSignedIdentity() const {
    return {filePath("self-signed.pem"), filePath("self-signed-key.pem")};
}

SimTlsIdentity SimCertificateAuthority::expiredIdentity() const {
    return {filePath("expired.pem"), filePath("expired-key.pem")};
}

SimTlsIdentity SimCertificateAuthority::wrongHostIdentity() const {
    return {filePath("wrong-host.pem"), filePath("wrong-host-key.pem")};
}

bool SimCertificateAuthority::generate() {
    KeyPtr caKey = makeKey();
    if (!caKey) {
        return false;
    }
    CertPtr ca = makeCertificate(caKey.get(),
                                 {"Tolvane Simulator Test CA", true, nullptr, nullptr, nullptr});
    if (!ca) {
        return false;
    }
    CertRequest expired{"127.0.0.1", false, kServerNames, ca.get(), caKey.get()};
    expired.notBefore = -2 * kDay;
    expired.notAfter = -kDay;
    const struct {
        SimTlsIdentity identity;
        CertRequest request;
    } servers[] = {
        {trustedIdentity(), {"127.0.0.1", false, kServerNames, ca.get(), caKey.get()}},
        {selfSignedIdentity(), {"127.0.0.1", false, kServerNames, nullptr, nullptr}},
        {expiredIdentity(), expired},
        {wrongHostIdentity(),
         {"elsewhere.tolvane.example", false, kOtherHostNames, ca.get(), caKey.get()}},
    };
    if (!writeCertificate(caFile(), ca.get())) {
        return false;
    }
    for (const auto& server : servers) {
        KeyPtr key = makeKey();
        if (!key) {
            return false;
        }
        CertPtr cert = makeCertificate(key.get(), server.request);
        if (!cert || !writeCertificate(server.identity.certFile, cert.get()) ||
            !writeKey(server.identity.keyFile, key.get())) {
            return false;
        }
    }
    return true;
}

}  // namespace tolvane::sim
