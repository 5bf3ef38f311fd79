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
    const auto bare = parseDefaultData(R"({"app.domain": 2})");
    EXPECT_EQ(data.environment, 1);
    EXPECT_TRUE(bare.endpoints.isEmpty());
    struct Case {
        bool base;
        int kind;
        const char* cell;
        const char* expected;
        bool bare = false;  // without endpoints the tables apply unchanged
    };
    const Case cases[] = {
        {true, 2, "https://api.tolvane.example/api/v1/", "http://127.0.0.1:4000/api/v1/"},
        {true, 0, "https://passport.tolvane.example/", "http://127.0.0.1:4000/"},
        {true, 5, "http://pc.tolvane.example/", "http://127.0.0.1:5000/pc/"},
        {true, 11, "", ""},  // an environment without the service keeps its empty cell
        {false, 0, "https://api.tolvane.example", "http://127.0.0.1:4000"},
        {false, 3, "https://pc.tolvane.example", "http://127.0.0.1:6000"},
        {false, 5, "", ""},
        {true, 2, "https://a.example/api/v1/", "https://a.example/api/v1/", true},
    };
    for (const Case& c : cases) {
        const auto& endpoints = c.bare ? bare.endpoints : data.endpoints;
        const QString result = c.base ? applyBaseOverride(endpoints, c.kind, c.cell)
                                      : applyHostOverride(endpoints, c.kind, c.cell);
        EXPECT_EQ(result.toStdString(), c.expected) << c.kind << " " << c.cell;
    }
}

}  // namespace
