#pragma once

// Request signatures of the client-base library. Each function takes a null-terminated UTF-8
// text and returns a newly allocated null-terminated lowercase hex text that the caller
// releases with FreeAuthCode; a null text gives a null result. The algorithm and both secrets
// are described in docs/signing.md.

#ifdef __cplusplus
extern "C" {
#endif

// Signs with the production secret.
char* GenerateAuthCode(const char* utf8Text);

// Signs with the secret of the test environments.
char* GenerateAuthCodeLive(const char* utf8Text);

// Releases a result of either function; null is accepted.
void FreeAuthCode(char* code);

#ifdef __cplusplus
}
#endif
