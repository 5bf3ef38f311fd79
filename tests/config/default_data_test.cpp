#include <gtest/gtest.h>

#include "tolvane_config/default_data.h"

namespace {

using tolvane::config::applyBaseOverride;
using tolvane::config::applyHostOverride;
using tolvane::config::parseDefaultData;

TEST(DefaultData, EndpointOverrides) {
    const auto data = parseDefaultData(R"({"app.domain": 1, "endpoints": {
        "origin": "http://127.0.0.1:4000/",
        "base": {"5": "http://127.0.0.1:5000/pc/", "x": "ignored"},
        "host": {"3": "http://127.0.0.1:6000"}}})");
    EXPECT_EQ(data.environment, 1);
    struct Case {
        bool base;
        int kind;
        const char* cell;
        const char* expected;
    };
    const Case cases[] = {
        {true, 2, "https://api.tolvane.example/api/v1/", "http://127.0.0.1:4000/api/v1/"},
        {true, 0, "https://passport.tolvane.example/", "http://127.0.0.1:4000/"},
        {true, 5, "http://pc.tolvane.example/", "http://127.0.0.1:5000/pc/"},
        {true, 11, "", ""},  // an environment without the service keeps its empty cell
        {false, 0, "https://api.tolvane.example", "http://127.0.0.1:4000"},
        {false, 3, "https://pc.tolvane.example", "http://127.0.0.1:6000"},
        {false, 5, "", ""},
    };
    for (const Case& c : cases) {
        const QString result = c.base ? applyBaseOverride(data.endpoints, c.kind, c.cell)
                                      : applyHostOverride(data.endpoints, c.kind, c.cell);
        EXPECT_EQ(result.toStdString(), c.expected) << c.kind << " " << c.cell;
    }
}

TEST(DefaultData, WithoutEndpointsTheTablesApplyUnchanged) {
    const auto data = parseDefaultData(R"({"app.domain": 2})");
    EXPECT_TRUE(data.endpoints.isEmpty());
    EXPECT_EQ(applyBaseOverride(data.endpoints, 2, "https://a.example/api/v1/").toStdString(),
              "https://a.example/api/v1/");
}

}  // namespace
