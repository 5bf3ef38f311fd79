#include <gtest/gtest.h>

#include <QUrlQuery>

#include "net/net_test_support.h"
#include "net/own_url_request.h"

namespace {

using namespace tolvane::net;

ParamList queryOf(const QUrl& url) {
    ParamList items;
    for (const auto& item : QUrlQuery(url).queryItems(QUrl::FullyDecoded)) {
        items.append(item);
    }
    return items;
}

TEST(OwnUrlRequest, PlacesAndSignsItems) {
    const qint64 t = 1700000000;
    const QString time = QString::number(t);
    const ParamList postItems{{"token", "T"}, {"tag_id", "3"}, {"id", "8"}};
    struct Case {
        const char* name;
        OwnUrlRequestInput input;
        ParamList expectedQuery;  // "auth" without its value: filled from the signature text
        ParamList expectedForm;
        ParamList expectedHeaders;
        QString signatureText;  // empty: unsigned
    };
    const Case cases[] = {
        {"signed GET",
         {HttpMethod::Get,
          "https://api.tolvane.example",
          "/api/v1/checkAnchorInGuild",
          "checkAnchorInGuild",
          {{"token", "T"}},
          false,
          false,
          t,
          {}},
         {{"token", "T"}, {"aid", "vxtool"}, {"time", time}, {"auth", ""}},
         {},
         {},
         "checkAnchorInGuild?aid=vxtool&time=1700000000&token=T%s"},
        {"signed GET without items",
         {HttpMethod::Get,
          "https://api.tolvane.example",
          "/api/videoPartner/bitrate_config",
          "api/videoPartner/bitrate_config",
          {},
          false,
          false,
          t,
          {}},
         {{"aid", "vxtool"}, {"time", time}, {"auth", ""}},
         {},
         {},
         "api/videoPartner/bitrate_config?aid=vxtool&time=1700000000%s"},
        {"signed POST",
         {HttpMethod::Post,
          "https://api.tolvane.example",
          "/api/v1/fans",
          "fans",
          {{"token", "T"}, {"rid", "9"}},
          false,
          false,
          t,
          {}},
         {{"aid", "vxtool"}, {"time", time}, {"auth", ""}},
         {{"token", "T"}, {"rid", "9"}},
         {},
         "fans?aid=vxtool&time=1700000000%s&rid=9&token=T"},
        {"POST with client_sys",
         {HttpMethod::Post,
          "https://mapi.tolvane.example",
          "/mgapi/livenc/anchor/createLiveRoom",
          "mgapi/livenc/anchor/createLiveRoom",
          postItems,
          true,
          false,
          t,
          {}},
         {{"aid", "vxtool"}, {"client_sys", "pc"}, {"time", time}, {"auth", ""}},
         postItems,
         {},
         "mgapi/livenc/anchor/createLiveRoom?aid=vxtool&client_sys=pc&time=1700000000%s"
         "&id=8&tag_id=3&token=T"},
        {"unsigned GET",
         {HttpMethod::Get,
          "https://api.tolvane.example",
          "/api/v1/get_corner",
          "",
          {{"room_id", "5"}},
          false,
          true,
          t,
          {{"x", "1"}}},
         {{"room_id", "5"}},
         {},
         {{"x", "1"}},
         ""},
        {"unsigned POST",
         {HttpMethod::Post,
          "https://support.tolvane.example",
          "/japi/special",
          "",
          {{"appCode", "c"}},
          false,
          false,
          t,
          {}},
         {},
         {{"appCode", "c"}},
         {},
         ""},
        {"header signature after the caller's headers",
         {HttpMethod::Post,
          "https://passport.tolvane.example",
          "/japi/app/auth/generateCode",
          "japi/app/auth/generateCode",
          {{"bizType", "13"}, {"longToken", "L"}, {"did", "D"}},
          false,
          true,
          t,
          {{"referer", "https://r.example/"}}},
         {{"aid", "vxtool"}, {"time", time}, {"auth", ""}},
         {{"bizType", "13"}, {"longToken", "L"}, {"did", "D"}},
         {{"referer", "https://r.example/"}, {"aid", "vxtool"}, {"time", time}, {"auth", ""}},
         "japi/app/auth/generateCode?aid=vxtool&time=1700000000%s&bizType=13&did=D&longToken=L"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const OwnUrlRequest request = buildOwnUrlRequest(c.input);
        const QString auth = c.signatureText.isEmpty() ? QString() : expectedAuth(c.signatureText);
        auto withAuth = [&auth](ParamList list) {
            for (auto& pair : list) {
                if (pair.first == "auth") {
                    pair.second = auth;
                }
            }
            return list;
        };
        EXPECT_EQ(request.url.adjusted(QUrl::RemoveQuery).toString(),
                  QString::fromStdString(c.input.host) + c.input.urlPath);
        EXPECT_EQ(request.url.hasQuery(), !c.expectedQuery.isEmpty());
        EXPECT_EQ(queryOf(request.url), withAuth(c.expectedQuery));
        EXPECT_EQ(request.form, c.expectedForm);
        EXPECT_EQ(request.headers, withAuth(c.expectedHeaders));
    }
}

TEST(OwnUrlRequest, ValuesSurviveTheQueryAndAreSignedAsGiven) {
    OwnUrlRequestInput input;
    input.host = "http://127.0.0.1:4000";
    input.urlPath = "/api/v1/livingCheck";
    input.signingPath = "livingCheck";
    input.items = {{"name", "a&b=c+d #é%41"}, {"token", "1_0_x_0_0"}};
    input.time = 5;
    const OwnUrlRequest request = buildOwnUrlRequest(input);
    const ParamList query = queryOf(request.url);
    ASSERT_EQ(query.size(), 5);
    EXPECT_EQ(query[0], qMakePair(QStringLiteral("name"), QStringLiteral("a&b=c+d #é%41")));
    EXPECT_EQ(request.url.toString(QUrl::FullyEncoded).section('?', 1, 1).section('&', 0, 0),
              "name=a%26b%3Dc%2Bd%20%23%C3%A9%2541");
    EXPECT_EQ(query[4].second,
              expectedAuth("livingCheck?aid=vxtool&name=a&b=c+d #é%41&time=5&token=1_0_x_0_0%s"));
}

}  // namespace
