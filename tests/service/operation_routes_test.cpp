#include <gtest/gtest.h>

#include <QUrl>
#include <algorithm>

#include "net/endpoints.h"
#include "net/operation_row.h"
#include "platform/sim_platform.h"
#include "support/scoped_env.h"

namespace {

using tolvane::net::OperationRow;
using tolvane::sim::SimAddressTable;
using tolvane::sim::SimRoute;
using tolvane::sim::SimSignRule;

// How the platform checks what each kind of row signs.
SimSignRule expectedRule(const OperationRow& row) {
    using R = SimSignRule;
    if (row.onHostTable) {
        return row.signingPath != nullptr ? R::CommonLists : R::None;
    }
    const R byKind[] = {R::Query,   R::Query, R::Query, R::Query, R::Query,   R::Query,
                        R::Mobile3, R::Query, R::None,  R::None,  R::Mobile2, R::None};
    return row.kind >= 0 && row.kind < 12 ? byKind[row.kind] : R::Query;
}

// Module and simulator keep tables of their own, so every operation must meet a matching route.
TEST(OperationRoutes, EveryRowMeetsItsSimulatorRoute) {
    IsolatedWorkspace workspace;
    tolvane::sim::SimPlatform sim(workspace.path());
    const std::vector<SimRoute> routes = sim.http().routes().routes();
    tolvane::config::EndpointOverrides overrides;
    overrides.origin = QStringLiteral("http://127.0.0.1:1");
    const VxEndpoints endpoints(overrides);

    const auto rows = tolvane::net::registeredOperations();
    ASSERT_GE(rows.size(), 4u);
    for (const OperationRow* row : rows) {
        SCOPED_TRACE(row->name);
        const QString url =
            row->onHostTable ? QString::fromStdString(endpoints.host(row->kind, 0)) + row->path
                             : endpoints.composeUrl(row->kind, 0, QString::fromLatin1(row->path));
        const std::string path = QUrl(url).path().toStdString();
        const std::string method = row->method == tolvane::net::HttpMethod::Get ? "GET" : "POST";
        const auto route = std::find_if(routes.begin(), routes.end(), [&](const SimRoute& r) {
            return r.path == path && r.method == method;
        });
        ASSERT_NE(route, routes.end()) << method << " " << path;
        EXPECT_EQ(route->table, row->onHostTable ? SimAddressTable::Host : SimAddressTable::Base);
        EXPECT_EQ(route->kind, row->kind);
        const std::string signingPath =
            row->onHostTable ? (row->signingPath ? row->signingPath : "") : row->path;
        EXPECT_EQ(route->signingPath, signingPath);
        EXPECT_EQ(route->rule, expectedRule(*row));
    }
}

}  // namespace
