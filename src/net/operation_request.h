#pragma once

#include <string>

#include "net/endpoints.h"
#include "net/operation_row.h"
#include "net/param_list.h"

namespace tolvane::net {

// A request ready for the wire: nothing is encoded yet, the signature is in place.
struct PreparedRequest {
    HttpMethod method = HttpMethod::Get;
    std::string url;    // scheme, host and path; no query
    ParamList query;    // in sending order
    ParamList headers;  // beside "User-Device", which the request client adds
    ParamList form;     // POST body in sending order; empty for a GET
};

// Places an operation's own items and the common values as its row says, and signs them.
// Host rows: a POST sends its own items as the body and aid[, client_sys], time, auth as the
// query; a GET sends its own items first in the query, then the same common items; the
// signature covers the query items other than aid/time/auth as the first list and the form as
// the second. Base rows: the common items go to the query (group B) or the headers (group A),
// the own items to the body of a POST or the query of a GET, and the kind signs the groups.
// `environment` picks the address column and, for the mobile kinds, the secret.
PreparedRequest prepareOperation(const OperationRow& row, const ParamList& items,
                                 const CommonValues& common, const VxEndpoints& endpoints,
                                 int environment, const ParamList& extraHeaders = ParamList());

// The URL as it goes out, query included; what failure lines name.
std::string sentUrl(const PreparedRequest& request);

// Values UTF-8 and percent-encoded, keys as they are, pairs joined with "&".
std::string encodedPairs(const ParamList& list);

}  // namespace tolvane::net
