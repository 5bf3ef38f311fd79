#include <gtest/gtest.h>

#include "net/net_test_support.h"
#include "net/operation_request.h"

namespace {

using namespace tolvane::net;

// The expected lists name "auth" without its value; it is filled from the signature text.
ParamList withAuth(ParamList list, const QString& auth) {
    for (auto& pair : list) {
        if (pair.first == "auth") {
            pair.second = auth;
        }
    }
    return list;
}

VxEndpoints simulatorEndpoints() {
    tolvane::config::EndpointOverrides overrides;
    overrides.origin = "http://127.0.0.1:4000";
    return VxEndpoints(overrides);
}

CommonValues commonAt(qint64 time) {
    CommonValues common;
    common.time = time;
    common.token = QStringLiteral("T");
    return common;
}

TEST(OperationRequest, PlacesAndSignsItems) {
    const HttpMethod get = HttpMethod::Get;
    const HttpMethod post = HttpMethod::Post;
    const ParamList common{{"aid", "vxtool"}, {"time", "1700"}, {"auth", ""}};
    const ParamList items{{"token", "T"}, {"tag_id", "3"}};
    const ParamList referer{{"referer", "r"}};
    const OperationRow signedGet = hostRow("x", get, HostKind::ContentApi, "/api/v1/x", "s");
    const OperationRow signedPost = hostRow("x", post, HostKind::ContentApi, "/api/v1/x", "s");
    const OperationRow mobile3 =
        baseRow("x", post, BaseKind::Mobile3, "m/x").commonIn(CommonPlacement::Headers);
    struct Case {
        const char* name;
        OperationRow row;
        const char* url;
        ParamList expectedQuery;
        ParamList expectedForm;
        ParamList expectedHeaders;
        QString signatureText;
        int environment = 0;  // any but 0 signs the mobile kinds with the test secret
    };
    // clang-format off
    const Case cases[] = {
        {"host GET", signedGet, "http://127.0.0.1:4000/api/v1/x", items + common, {}, referer,
         "s?aid=vxtool&tag_id=3&time=1700&token=T%s"},
        {"host POST", signedPost, "http://127.0.0.1:4000/api/v1/x", common, items, referer,
         "s?aid=vxtool&time=1700%s&tag_id=3&token=T"},
        {"host POST with client_sys", signedPost.withClientSys(), "http://127.0.0.1:4000/api/v1/x",
         {{"aid", "vxtool"}, {"client_sys", "pc"}, {"time", "1700"}, {"auth", ""}}, items, referer,
         "s?aid=vxtool&client_sys=pc&time=1700%s&tag_id=3&token=T"},
        {"host header signature", signedPost.withHeaderSignature(), "http://127.0.0.1:4000/api/v1/x",
         common, items, referer + common, "s?aid=vxtool&time=1700%s&tag_id=3&token=T"},
        {"host unsigned GET", hostRow("x", get, HostKind::WebConfig, "/f.json", nullptr),
         "http://127.0.0.1:4000/f.json", items, {}, referer, ""},
        {"host unsigned POST", hostRow("x", post, HostKind::ContentApi, "/api/v1/x", nullptr),
         "http://127.0.0.1:4000/api/v1/x", {}, items, referer, ""},
        // Kind 2 signs its query group and keeps the own items in the body.
        {"base query", baseRow("x", post, BaseKind::ContentV1, "my_room"),
         "http://127.0.0.1:4000/api/v1/my_room", common, items, referer,
         "my_room?aid=vxtool&time=1700%s&tag_id=3&token=T"},
        // Kind 6 signs aid and time of its header group with the form; no token header.
        {"base headers, production", mobile3.withClientSys(), "http://127.0.0.1:4000/m/x", {}, items,
         referer + ParamList{{"aid", "vxtool"}, {"client_sys", "pc"}, {"time", "1700"}, {"auth", ""}},
         "m/x?aid=vxtool&time=1700%s&tag_id=3&token=T"},
        {"base headers, test environment", mobile3, "http://127.0.0.1:4000/m/x", {}, items,
         referer + ParamList{{"aid", "vxtool"}, {"time", "1700"}, {"auth", ""}},
         "m/x?aid=vxtool&time=1700%s&tag_id=3&token=T", 7},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const PreparedRequest request = prepareOperation(
            c.row, items, commonAt(1700), simulatorEndpoints(), c.environment, referer);
        const QString auth = c.signatureText.isEmpty()
                                 ? QString()
                                 : expectedAuth(c.signatureText, c.environment != 0);
        EXPECT_EQ(request.url, c.url);
        EXPECT_EQ(request.query, withAuth(c.expectedQuery, auth));
        EXPECT_EQ(request.form, c.expectedForm);
        EXPECT_EQ(request.headers, withAuth(c.expectedHeaders, auth));
    }
}

TEST(OperationRequest, ValuesSurviveTheQueryAndAreSignedAsGiven) {
    const OperationRow row = hostRow("livingCheck", HttpMethod::Get, HostKind::ContentApi,
                                     "/api/v1/livingCheck", "livingCheck");
    const PreparedRequest request =
        prepareOperation(row, {{"name", "a&b=c+d #é%41"}, {"token", "1_0_x_0_0"}}, commonAt(5),
                         simulatorEndpoints(), 0);
    EXPECT_EQ(sentUrl(request),
              "http://127.0.0.1:4000/api/v1/livingCheck?name=a%26b%3Dc%2Bd%20%23%C3%A9%2541"
              "&token=1_0_x_0_0&aid=vxtool&time=5&auth=" +
                  expectedAuth("livingCheck?aid=vxtool&name=a&b=c+d #é%41&time=5&token=1_0_x_0_0%s")
                      .toStdString());
}

}  // namespace
