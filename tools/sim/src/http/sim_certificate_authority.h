#pragma once

#include <QTemporaryDir>
#include <string>

namespace tolvane::sim {

// A certificate and its private key as PEM files.
struct SimTlsIdentity {
    std::string certFile;
    std::string keyFile;
};

// A throw-away certificate authority made at run time, so HTTPS tests need no files in the
// tree: a CA, a server certificate it signed for 127.0.0.1 and localhost, and the three
// certificates a client must refuse: a self-signed one that no client trusts, one the CA
// signed that expired yesterday, and one the CA signed for another host name. Files live in a
// temporary folder removed with the object.
class SimCertificateAuthority {
public:
    SimCertificateAuthority();
    SimCertificateAuthority(const SimCertificateAuthority&) = delete;
    SimCertificateAuthority& operator=(const SimCertificateAuthority&) = delete;

    bool isValid() const { return valid_; }
    std::string folder() const;
    // The CA certificate a client must trust.
    std::string caFile() const;
    SimTlsIdentity trustedIdentity() const;
    SimTlsIdentity selfSignedIdentity() const;
    SimTlsIdentity expiredIdentity() const;
    SimTlsIdentity wrongHostIdentity() const;

private:
    bool generate();
    std::string filePath(const char* name) const;

    QTemporaryDir dir_;
    bool valid_ = false;
};

}  // namespace tolvane::sim
