#include <gtest/gtest.h>

#include <QUrl>
#include <set>
#include <utility>

#include "net/endpoints.h"
#include "net/net_test_support.h"

namespace {

using tolvane::net::compiledBaseAddress;
using tolvane::net::compiledHost;

using Cell = std::pair<int, int>;  // (kind, environment)

// Checks the shape of every filled cell and returns the empty ones.
template <typename Lookup, typename Check>
std::set<Cell> emptyCells(int kinds, Lookup lookup, Check check) {
    std::set<Cell> empty;
    for (int kind = 0; kind < kinds; ++kind) {
        for (int env = 0; env < 4; ++env) {
            const QString cell = lookup(kind, env);
            if (cell.isEmpty()) {
                empty.insert({kind, env});
                continue;
            }
            const QUrl url(cell);
            SCOPED_TRACE(cell.toStdString());
            EXPECT_TRUE(url.host().endsWith(".tolvane.example"));
            check(kind, env, url);
        }
    }
    return empty;
}

TEST(Endpoints, CellsSchemesAndPaths) {
    const char* const basePath[12] = {
        "/", "/", "/api/v1/", "/api/videoPartner/", "/api/", "/", "/", "/", "/", "/", "/", "/"};
    const auto base = emptyCells(12, compiledBaseAddress, [&](int kind, int env, const QUrl& url) {
        EXPECT_EQ(url.scheme(), env == 0 && kind != 5 ? "https" : "http");
        EXPECT_EQ(url.path(), basePath[kind]);
    });
    EXPECT_EQ(base, (std::set<Cell>{{6, 3}, {9, 3}, {10, 3}, {11, 3}}));  // 44 filled

    const auto host = emptyCells(8, compiledHost, [](int kind, int env, const QUrl& url) {
        EXPECT_EQ(url.scheme(), env == 0 || (kind == 7 && env == 2) ? "https" : "http");
        EXPECT_TRUE(url.path().isEmpty());
    });
    EXPECT_EQ(host, (std::set<Cell>{{5, 3}, {6, 3}, {7, 3}}));  // 29 filled

    for (int env = 1; env < 4; ++env) {
        const QString shared = QUrl(compiledBaseAddress(1, env)).host();
        for (const int kind : {2, 3, 4, 7}) {
            EXPECT_EQ(QUrl(compiledBaseAddress(kind, env)).host(), shared) << kind << "/" << env;
        }
    }
}

TEST(Endpoints, LookupEdges) {
    struct Case {
        bool base;
        int kind;
        int env;
        QString expected;
    };
    // clang-format off
    const Case cases[] = {
        {true, 2, 7, compiledBaseAddress(2, 0)}, {true, 2, -1, compiledBaseAddress(2, 0)},
        {false, 7, 7, compiledHost(7, 0)},       {false, 3, -1, compiledHost(3, 0)},
        {true, 11, 3, ""}, {true, 12, 0, ""}, {true, -1, 0, ""}, {false, 8, 0, ""},
        // The PC client API is plain http in the base table, https in the host table.
        {true, 5, 0, "http://pc.tolvane.example/"}, {false, 3, 0, "https://pc.tolvane.example"},
    };
    // clang-format on
    for (const Case& c : cases) {
        const QString actual =
            c.base ? compiledBaseAddress(c.kind, c.env) : compiledHost(c.kind, c.env);
        EXPECT_EQ(actual, c.expected) << (c.base ? "base " : "host ") << c.kind << "/" << c.env;
    }
}

TEST(Endpoints, OverridesPointAddressesElsewhere) {
    // How each cell is overridden is shown by the default.data tests; every test against the
    // simulator reads its origin from default.data.
    tolvane::config::EndpointOverrides overrides;
    overrides.origin = "http://127.0.0.1:4000";
    const VxEndpoints endpoints(overrides);
    EXPECT_EQ(endpoints.baseAddress(12, 0), "");
    EXPECT_EQ(endpoints.host(8, 0), "");
    EXPECT_EQ(endpoints.composeUrl(3, 0, "getAllCateInfo"),
              "http://127.0.0.1:4000/api/videoPartner/getAllCateInfo");
    EXPECT_EQ(endpoints.composeUrl(6, 3, "mgapi/x"), "mgapi/x");
    EXPECT_EQ(endpoints.roomUrl(1, 288016), "http://127.0.0.1:4000/288016");

    overrides.host.insert(1, "http://" + QString(2000, 'a'));
    EXPECT_EQ(VxEndpoints(overrides).roomUrl(0, 1).size(), 1023u);  // cut at its buffer
}

}  // namespace
