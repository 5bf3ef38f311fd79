#include <gtest/gtest.h>

#include <QFile>
#include <QRegularExpression>
#include <QStringList>
#include <QUrl>
#include <algorithm>

#include "liveroom/vx_live_room_info.h"
#include "net/endpoints.h"
#include "net/operation_row.h"
#include "support/sim_service_fixture.h"
#include "support/wait.h"

namespace {

// The requests as the first version of each operation sent them, with per-run values masked,
// so that any change of what goes out shows (TOLVANE_RECORD_WIRE=1 writes the file anew).
const char kGoldenFile[] = TOLVANE_TEST_DATA_DIR "/operation_wire.txt";

QString masked(QString text) {
    static const QRegularExpression volatilePair(QStringLiteral("(^|&)(time|auth|token)=[^&]*"));
    return text.replace(volatilePair, QStringLiteral("\\1\\2=<\\2>"));
}

QString describe(const tolvane::sim::SimRequest& request) {
    QStringList lines;
    QString target = QString::fromStdString(request.method + " " + request.path);
    if (!request.rawQuery.empty()) {
        target += QLatin1Char('?') + masked(QString::fromStdString(request.rawQuery));
    }
    lines << target;
    QStringList headers;
    for (const auto& [name, value] : request.headers) {
        const QString key = QString::fromStdString(name).toLower();
        if (key == "host" || key == "content-length" || key == "user-agent") {
            continue;
        }
        const bool secret = key == "time" || key == "auth" || key == "token";
        headers << key + ": " + (secret ? "<" + key + ">" : QString::fromStdString(value));
    }
    std::sort(headers.begin(), headers.end());
    for (const QString& header : headers) {
        lines << "  " + header;
    }
    if (!request.body.empty()) {
        lines << "  body " + masked(QString::fromStdString(request.body));
    }
    return lines.join(QLatin1Char('\n'));
}

class OperationWire : public SimServiceTest {};

TEST_F(OperationWire, RequestsMatchTheRecordedOnes) {
    login();
    sim().http().requestLog().clear();
    std::string error;

    // One call of every operation that builds its own request.
    ASSERT_TRUE(service().refreshUserInfo(error)) << error;  // profile, then the barrage start-up
    // The catalogue's resource files load on its own thread; their turn in the file is here.
    ASSERT_TRUE(waitUntil(
        [&] { return !static_cast<VxLiveRoomInfo*>(service().getLiveRoomInfo())->fetching(); }));
    bool live = false, showType = false;
    service().getRoomState(live, showType);
    // The anchor's queries and settings; the outputs are the subsystems' tests' to read.
    int32_t count = 0;
    std::string text, other;
    AnchorCardUser user;
    AnchorCardLevel level;
    LiveRoomParameter parameter;
    std::vector<BitrateConfig> presets;
    LivingStatistics statistics;
    service().getFollowCnt(count);
    service().checkInGuild(live);
    service().reportAnchorLocation("Hangzhou", "120.1", "30.2", text);
    service().getAnchorLocation(0, text);
    service().requestLiveAuthInfo(text);
    service().getAnchorHeadHoverInfo(user, level);
    service().get_black_user_list(text);
    service().unblack_user("20002", text);
    service().getCustomerServiceEntry("tolvane_pc", text, other);
    service().getLiveRoomParameter(parameter);
    service().getWatermarkLocation();
    service().getIntelligentSettingConfig(presets);
    service().sendLiveRemindCustom(u8"今晚八点开播", text);
    service().getLivingStatisticalInfo(statistics);
    service().createLiveRoom(207, -3);
    // A show on a handed-out line, with parameters of the host's.
    PushAddress* main = nullptr;
    PushAddress* h265 = nullptr;
    ASSERT_EQ(service().get_all_rtmp_addresses(main, count, h265, count), 0);
    LiveParameters parameters;
    parameters.room_live_type = 2;
    parameters.is_rtc = true;
    service().setLiveParameters(parameters);
    EXPECT_EQ(service().open_live_room(main[0].url), 0);
    service().stop_live_room();
    service().freeArray(main);
    service().freeArray(h265);
    // Phone codes, with extra items that go out in key order, and the binding. The login
    // library keeps the client version for the whole process, so it is set here as recorded.
    service().setClientVersion("00_00_00_00_FF_FF", "v1.0.0.0");
    LoginCheckRequest phone;
    phone.phoneText1 = "13900000002";
    phone.phoneText3 = "86";
    phone.extraParams = {{"zone", "z"}, {"app", "a"}};
    service().sendPhoneLoginCaptchaNew(phone, text);
    service().sendPhoneCaptchaNew(phone, true, text);
    service().bindPhoneNum(phone.phoneText1, text);
    service().stop();

    QStringList described;
    for (const auto& request : sim().http().requestLog().all()) {
        if (request.path != "/api/v1/timestamp") {
            EXPECT_TRUE(request.authOk) << request.path << " " << request.signingText;
            described << describe(request);
        }
    }
    const QString actual = described.join(QStringLiteral("\n\n")) + QLatin1Char('\n');
    if (qEnvironmentVariableIsSet("TOLVANE_RECORD_WIRE")) {
        QFile out(QString::fromLatin1(kGoldenFile));
        ASSERT_TRUE(out.open(QIODevice::WriteOnly | QIODevice::Truncate));
        out.write(actual.toUtf8());
        return;
    }
    QFile golden(QString::fromLatin1(kGoldenFile));
    ASSERT_TRUE(golden.open(QIODevice::ReadOnly));
    EXPECT_EQ(actual.toStdString(), QString::fromUtf8(golden.readAll()).toStdString());
}

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
