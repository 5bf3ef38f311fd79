#include <gtest/gtest.h>

#include <QUrl>
#include <set>
#include <utility>

#include "net/endpoints.h"
#include "net/net_test_support.h"
#include "support/scoped_env.h"

namespace {

using tolvane::net::compiledBaseAddress;
using tolvane::net::compiledHost;

using Cell = std::pair<int, int>;  // (kind, environment)

TEST(Endpoints, EnvironmentsWithoutAServiceHaveEmptyCells) {
    std::set<Cell> emptyBase;
    int filledBase = 0;
    for (int kind = 0; kind < 12; ++kind) {
        for (int env = 0; env < 4; ++env) {
            if (compiledBaseAddress(kind, env).isEmpty()) {
                emptyBase.insert({kind, env});
            } else {
                ++filledBase;
            }
        }
    }
    EXPECT_EQ(filledBase, 44);
    EXPECT_EQ(emptyBase, (std::set<Cell>{{6, 3}, {9, 3}, {10, 3}, {11, 3}}));

    std::set<Cell> emptyHost;
    int filledHost = 0;
    for (int kind = 0; kind < 8; ++kind) {
        for (int env = 0; env < 4; ++env) {
            if (compiledHost(kind, env).isEmpty()) {
                emptyHost.insert({kind, env});
            } else {
                ++filledHost;
            }
        }
    }
    EXPECT_EQ(filledHost, 29);
    EXPECT_EQ(emptyHost, (std::set<Cell>{{5, 3}, {6, 3}, {7, 3}}));
}

TEST(Endpoints, SchemesAndShapesOfEveryCell) {
    const char* const basePath[12] = {
        "/", "/", "/api/v1/", "/api/videoPartner/", "/api/", "/", "/", "/", "/", "/", "/", "/"};
    for (int kind = 0; kind < 12; ++kind) {
        for (int env = 0; env < 4; ++env) {
            const QString cell = compiledBaseAddress(kind, env);
            if (cell.isEmpty()) {
                continue;
            }
            const QUrl url(cell);
            const bool plainProduction = kind == 5;
            const QString scheme = env == 0 && !plainProduction ? "https" : "http";
            EXPECT_EQ(url.scheme(), scheme) << kind << "/" << env;
            EXPECT_EQ(url.path(), basePath[kind]) << kind << "/" << env;
            EXPECT_TRUE(url.host().endsWith(".tolvane.example")) << kind << "/" << env;
        }
    }
    for (int kind = 0; kind < 8; ++kind) {
        for (int env = 0; env < 4; ++env) {
            const QString cell = compiledHost(kind, env);
            if (cell.isEmpty()) {
                continue;
            }
            const QUrl url(cell);
            const bool secureTest = kind == 7 && env == 2;
            EXPECT_EQ(url.scheme(), env == 0 || secureTest ? "https" : "http")
                << kind << "/" << env;
            EXPECT_TRUE(url.path().isEmpty()) << kind << "/" << env;
            EXPECT_TRUE(url.host().endsWith(".tolvane.example")) << kind << "/" << env;
        }
    }
}

TEST(Endpoints, ContentApiAndWebSiteShareOneHostPerTestEnvironment) {
    for (int env = 1; env < 4; ++env) {
        const QString shared = QUrl(compiledBaseAddress(1, env)).host();
        for (const int kind : {2, 3, 4, 7}) {
            EXPECT_EQ(QUrl(compiledBaseAddress(kind, env)).host(), shared) << kind << "/" << env;
        }
        EXPECT_NE(QUrl(compiledBaseAddress(0, env)).host(), shared);
    }
    // Production keeps the web site apart from the content API.
    EXPECT_NE(QUrl(compiledBaseAddress(4, 0)).host(), QUrl(compiledBaseAddress(2, 0)).host());
}

TEST(Endpoints, LookupEdges) {
    struct Case {
        bool base;
        int kind;
        int env;
        QString expected;
    };
    const Case cases[] = {
        {true, 2, 7, compiledBaseAddress(2, 0)},
        {true, 2, -1, compiledBaseAddress(2, 0)},
        {true, 2, 4, compiledBaseAddress(2, 0)},
        {true, 11, 3, QString()},
        {true, 12, 0, QString()},
        {true, 12, 2, QString()},
        {true, -1, 0, QString()},
        {false, 7, 7, compiledHost(7, 0)},
        {false, 3, -1, compiledHost(3, 0)},
        {false, 8, 0, QString()},
        {false, -1, 0, QString()},
        // The PC client API is plain http in the base table, https in the host table.
        {true, 5, 0, "http://pc.tolvane.example/"},
        {false, 3, 0, "https://pc.tolvane.example"},
    };
    for (const Case& c : cases) {
        const QString actual =
            c.base ? compiledBaseAddress(c.kind, c.env) : compiledHost(c.kind, c.env);
        EXPECT_EQ(actual, c.expected) << (c.base ? "base " : "host ") << c.kind << "/" << c.env;
    }
    EXPECT_FALSE(compiledBaseAddress(2, 0).isEmpty());
    EXPECT_FALSE(compiledHost(7, 0).isEmpty());
}

TEST(Endpoints, OverridesPointAddressesElsewhere) {
    tolvane::config::EndpointOverrides overrides;
    overrides.origin = "http://127.0.0.1:4000";
    overrides.base.insert(5, "http://127.0.0.1:5000/pc/");
    overrides.host.insert(2, "http://127.0.0.1:6000");
    const VxEndpoints endpoints(overrides);

    EXPECT_EQ(endpoints.baseAddress(2, 1), "http://127.0.0.1:4000/api/v1/");
    EXPECT_EQ(endpoints.baseAddress(5, 0), "http://127.0.0.1:5000/pc/");
    EXPECT_EQ(endpoints.baseAddress(11, 3), "");  // no such service there, origin or not
    EXPECT_EQ(endpoints.baseAddress(12, 0), "");
    EXPECT_EQ(endpoints.host(0, 0), "http://127.0.0.1:4000");
    EXPECT_EQ(endpoints.host(2, 3), "http://127.0.0.1:6000");
    EXPECT_EQ(endpoints.host(5, 3), "");
    EXPECT_EQ(endpoints.host(8, 0), "");

    EXPECT_EQ(endpoints.composeUrl(3, 0, "getAllCateInfo"),
              "http://127.0.0.1:4000/api/videoPartner/getAllCateInfo");
    EXPECT_EQ(endpoints.composeUrl(6, 3, "mgapi/x"), "mgapi/x");
    EXPECT_EQ(endpoints.roomUrl(1, 288016), "http://127.0.0.1:4000/288016");
    EXPECT_EQ(endpoints.roomUrl(0, -5), "http://127.0.0.1:4000/-5");
}

TEST(Endpoints, WithoutOverridesTheCompiledTablesApply) {
    const VxEndpoints endpoints;
    for (int env = -1; env < 5; ++env) {
        for (int kind = 0; kind < 12; ++kind) {
            EXPECT_EQ(endpoints.baseAddress(kind, env), compiledBaseAddress(kind, env));
        }
        for (int kind = 0; kind < 8; ++kind) {
            EXPECT_EQ(endpoints.host(kind, env), compiledHost(kind, env).toStdString());
        }
    }
    EXPECT_EQ(endpoints.roomUrl(0, 42), compiledHost(1, 0).toStdString() + "/42");
}

TEST(Endpoints, RoomUrlIsCutAtItsBuffer) {
    tolvane::config::EndpointOverrides overrides;
    overrides.host.insert(1, "http://" + QString(2000, 'a'));
    EXPECT_EQ(VxEndpoints(overrides).roomUrl(0, 1).size(), 1023u);
}

TEST(Endpoints, ReadsOverridesFromDefaultData) {
    IsolatedWorkspace workspace;
    workspace.writeDefaultData(
        R"({"app.domain": 2, "endpoints": {"origin": "http://127.0.0.1:4100"}})");
    const VxEndpoints endpoints = VxEndpoints::fromDefaultData();
    EXPECT_EQ(endpoints.baseAddress(0, 2), "http://127.0.0.1:4100/");
    EXPECT_EQ(endpoints.host(7, 2), "http://127.0.0.1:4100");

    workspace.writeDefaultData(R"({"app.domain": 2})");
    EXPECT_EQ(VxEndpoints::fromDefaultData().baseAddress(0, 2), compiledBaseAddress(0, 2));
}

}  // namespace
