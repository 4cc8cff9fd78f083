// Who gets what from the live bench: its own pages with the token, and nobody else anything.

#include "tests/simulator/LiveBench.h"
#include "tests/support/TestFolder.h"
#include "tests/support/Text.h"

#include <arpa/inet.h>
#include <chrono>
#include <cstring>
#include <gmock/gmock.h>
#include <ifaddrs.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace tavrelin {
namespace {

using testing::HasSubstr;
using testing::StartsWith;
using Json = LiveBench::Json;

/// A plain connection to the bench, for what a library would not send.
class Connection {
  public:
    explicit Connection(int port, int receiveBuffer = 0, const char* address = "127.0.0.1")
        : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        if (receiveBuffer > 0) {
            ::setsockopt(socket_, SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof receiveBuffer);
        }
        const timeval patience{5, 0};
        ::setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        sockaddr_in to{};
        to.sin_family = AF_INET;
        to.sin_port = htons(static_cast<std::uint16_t>(port));
        ::inet_pton(AF_INET, address, &to.sin_addr);
        open_ = ::connect(socket_, reinterpret_cast<const sockaddr*>(&to), sizeof to) == 0;
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection() { ::close(socket_); }

    bool Open() const { return open_; }
    void Send(const std::string& text) const {
        ::send(socket_, text.data(), text.size(), MSG_NOSIGNAL);
    }
    /// What comes until some text has come, the connection ends or five seconds have passed.
    std::string ReadUntil(const std::string& what) const {
        std::string all;
        char piece[4096];
        for (ssize_t count = 0; all.find(what) == std::string::npos &&
                                (count = ::recv(socket_, piece, sizeof piece, 0)) > 0;) {
            all.append(piece, static_cast<std::size_t>(count));
        }
        return all;
    }

  private:
    int socket_;
    bool open_ = false;
};

class LiveAccess : public testing::Test {
  protected:
    std::string Ask(const std::string& request, const std::string& headers,
                    const std::string& body = "") const {
        const Connection connection(bench.Port());
        connection.Send(
            request + " HTTP/1.1\r\n" + headers +
            (body.empty() ? "" : "Content-Length: " + std::to_string(body.size()) + "\r\n") +
            "Connection: close\r\n\r\n" + body);
        return connection.ReadUntil("\r\n");
    }
    std::string HostLine() const { return "Host: " + bench.Host() + "\r\n"; }
    std::string TokenLine() const { return "X-Token: " + bench.Token() + "\r\n"; }
    std::string State() const { return "GET /state?token=" + bench.Token(); }
    std::string Stream() const {
        return "GET /events?token=" + bench.Token() + " HTTP/1.1\r\n" + HostLine() + "\r\n";
    }

    TestFolder folder;
    LiveBench bench{folder.Path(), "run", {"--pace", "max", "--board-time", "1000000"}};
};

const std::string kPause = R"({"do":"pause"})";

TEST_F(LiveAccess, IsForThisMachineAlone) {
    ifaddrs* all = nullptr;
    ASSERT_EQ(::getifaddrs(&all), 0);
    for (const ifaddrs* one = all; one != nullptr; one = one->ifa_next) {
        char text[INET_ADDRSTRLEN] = "";
        if (one->ifa_addr != nullptr && one->ifa_addr->sa_family == AF_INET) {
            ::inet_ntop(AF_INET, &reinterpret_cast<const sockaddr_in*>(one->ifa_addr)->sin_addr,
                        text, sizeof text);
            EXPECT_EQ(Connection(bench.Port(), 0, text).Open(), std::string(text) == "127.0.0.1")
                << text;
        }
    }
    ::freeifaddrs(all);
}

TEST_F(LiveAccess, IsRefusedUnderAForeignName) {
    const std::string port = std::to_string(bench.Port());
    for (const std::string& host :
         {"evil.example:" + port, std::string("127.0.0.1"), std::string("127.0.0.1:1"),
          "127.0.0.1.evil.example:" + port, "localhost:" + port + "0", std::string()}) {
        EXPECT_THAT(Ask(State(), "Host: " + host + "\r\n"), StartsWith("HTTP/1.1 403")) << host;
        EXPECT_THAT(Ask("GET /", "Host: " + host + "\r\n"), StartsWith("HTTP/1.1 403")) << host;
    }
    EXPECT_THAT(Ask(State(), ""), StartsWith("HTTP/1.1 403"));
    EXPECT_THAT(Ask(State(), HostLine() + "Host: evil.example\r\n"), StartsWith("HTTP/1.1 403"));
    EXPECT_THAT(Ask(State(), HostLine()), StartsWith("HTTP/1.1 200"));
    EXPECT_THAT(Ask(State(), "Host: localhost:" + port + "\r\n"), StartsWith("HTTP/1.1 200"));
}

TEST_F(LiveAccess, IsRefusedToPagesOfOthers) {
    for (const char* origin :
         {"http://evil.example", "null", "https://127.0.0.1", "http://127.0.0.1:1"}) {
        EXPECT_THAT(
            Ask("POST /do", HostLine() + TokenLine() + "Origin: " + origin + "\r\n", kPause),
            StartsWith("HTTP/1.1 403"))
            << origin;
    }
    EXPECT_EQ(bench.State().at("paused"), false);
    EXPECT_THAT(Ask("POST /do",
                    HostLine() + TokenLine() + "Origin: http://" + bench.Host() + "\r\n", kPause),
                StartsWith("HTTP/1.1 200"));
}

TEST_F(LiveAccess, NeedsTheTokenForAllButThePageItself) {
    for (const std::string& line :
         {std::string(), std::string("X-Token: \r\n"), "X-Token: " + std::string(32, '0') + "\r\n",
          TokenLine().substr(0, 20) + "\r\n"}) {
        EXPECT_THAT(Ask("POST /do", HostLine() + line, kPause), StartsWith("HTTP/1.1 403")) << line;
        EXPECT_THAT(Ask("POST /do?token=" + bench.Token(), HostLine() + line, kPause),
                    StartsWith("HTTP/1.1 403"))
            << "a form of another page could send it so";
    }
    for (const char* path : {"/state", "/events", "/scenario"}) {
        EXPECT_THAT(Ask("GET " + std::string(path), HostLine()), StartsWith("HTTP/1.1 403"));
        EXPECT_THAT(Ask("GET " + std::string(path) + "?token=0", HostLine()),
                    StartsWith("HTTP/1.1 403"));
    }
    EXPECT_THAT(Ask("GET /", HostLine()), StartsWith("HTTP/1.1 200"));
}

TEST_F(LiveAccess, ServesNothingButItsOwnFiles) {
    const std::string query = "?token=" + bench.Token();
    for (const char* path :
         {"/index.html", "/../../../../etc/passwd", "/%2e%2e/%2e%2e/etc/passwd", "//etc/passwd",
          "/bench.js/../../../CMakeCache.txt", "/bench.css%00.html", "/do", "/favicon.ico",
          "/state/", "/page/index.html"}) {
        EXPECT_THAT(Ask("GET " + std::string(path) + query, HostLine()), StartsWith("HTTP/1.1 40"))
            << path;
    }
    for (const char* method : {"PUT", "DELETE", "PATCH", "OPTIONS", "TRACE", "BREW"}) {
        EXPECT_THAT(Ask(std::string(method) + " /state" + query, HostLine()),
                    StartsWith("HTTP/1.1 40"))
            << method;
    }
    EXPECT_THAT(Ask("POST /state" + query, HostLine() + TokenLine(), "{}"),
                StartsWith("HTTP/1.1 40"));
}

TEST_F(LiveAccess, AnswersRubbishWithOneLine) {
    bench.Do({{"do", "pause"}});
    const std::string fault = R"({"do":"fault","call":"open",)";
    const std::pair<std::string, std::string> rubbish[]{
        {"", "takes a JSON object"},
        {"{", "takes a JSON object"},
        {"[]", "takes a JSON object"},
        {"null", "takes a JSON object"},
        {std::string(100, '['), "takes a JSON object"},
        {R"({"do":1})", "takes a JSON object"},
        {"\xff\xfe", "takes a JSON object"},
        {R"({"do":"reboot"})", "do: unknown command; known: absorbance, card, fault"},
        {R"({"do":"pause","value":1})", "pause: takes no such key"},
        {R"({"do":"pace"})", "value: is missing"},
        {R"({"do":"pace","value":-1})", "pace: takes 0 or a number from 0.000001 to 1000000000"},
        {R"({"do":"pace","value":"1"})", "pace: takes 0 or a number"},
        {R"({"do":"pace","value":NaN})", "takes a JSON object"},
        {R"({"do":"pace","value":1e999})", "takes a JSON object"},
        {R"({"do":"absorbance","value":6.5})",
         "sample.event.absorbance: takes a number from -2 to 6"},
        {R"({"do":"absorbance","value":"0.3"})",
         "sample.event.absorbance: takes a number from -2 to 6"},
        {R"({"do":"absorbance","value":[0.3]})", "value: takes one value"},
        {R"({"do":"absorbance","value":null})", "value: takes one value"},
        {R"({"do":"absorbance","value":0.3,"at":1})", "absorbance: takes no such key"},
        {R"({"do":"noise","value":-1})", "detector.event.noise: takes a number from 0 to 10000000"},
        {R"({"do":"card","value":"eat"})", "card.event.do: takes \\\"insert\\\""},
        {R"({"do":"card","value":"remove\"\n[[fault]]"})", "card.event.do: takes"},
        {R"({"do":"flag","value":"x"})", "flag: takes \\\"blocked\\\" or \\\"free\\\""},
        {fault + R"("errno":"EFOO"})", "fault.errno: unknown name"},
        {fault + R"("errno":"EIO","path":"/etc/passwd"})", "fault.path: no path of the board"},
        {R"({"do":"fault","call":"read","errno":"EIO","bytes":1})",
         "fault.errno: a fault has either an errno or bytes"},
        {R"({"do":"fault","call":"opn","errno":"EIO"})", "fault.call: unknown call"},
        {fault + R"("errno":"EIO","repeat":"twice"})", "fault.repeat: takes"},
        {R"({"do":"card","value":")" + std::string(5000, 'x') + "\"}", "the body is too long"},
    };
    for (const auto& [body, why] : rubbish) {
        const auto [status, answer] = bench.Post(body);
        EXPECT_EQ(status, 400) << body;
        EXPECT_THAT(answer, HasSubstr(R"({"error":")" + why)) << body;
        EXPECT_EQ(LinesOf(answer).size(), 1U);
    }
    for (const char* noise :
         {"\r\n\r\n", "GET\r\n\r\n", "\x16\x03\x01\x02", "GET / HTTP/9\r\n\r\n"}) {
        Connection(bench.Port()).Send(noise);
    }
    EXPECT_EQ(Split(bench.Get("/scenario").second, '[').size(), 1U) << "nothing of it is kept";
    EXPECT_EQ(bench.State().at("ended"), "");
}

TEST_F(LiveAccess, IsHeldBackByNobodyWhoIsSlowOrGone) {
    std::vector<std::unique_ptr<Connection>> slow;
    for (int i = 0; i < 8; ++i) {
        slow.push_back(std::make_unique<Connection>(bench.Port(), 4096));
        slow.back()->Send(Stream());
    }
    for (int i = 0; i < 8; ++i) {
        Connection(bench.Port()).Send(Stream()); // gone at once
        slow.push_back(std::make_unique<Connection>(bench.Port()));
        slow.back()->Send("GET /sta"); // never ends
    }
    LiveBench::Wait(3000);
    const double before = bench.State().at("time");
    LiveBench::Wait(500);
    const Json after = bench.State();
    EXPECT_GT(after.at("time").get<double>(), before + 10.0) << "at max pace";
    const Connection quick(bench.Port());
    quick.Send(Stream());
    EXPECT_THAT(quick.ReadUntil("event: state"), HasSubstr("event: all\ndata: {\"time\":"));
}

TEST_F(LiveAccess, IsForSixteenStreamsAtATime) {
    std::vector<std::unique_ptr<Connection>> streams;
    for (int i = 0; i < 16; ++i) {
        streams.push_back(std::make_unique<Connection>(bench.Port()));
        streams.back()->Send(Stream());
        EXPECT_THAT(streams.back()->ReadUntil("event: all"), StartsWith("HTTP/1.1 200")) << i;
    }
    const auto oneMore = [this] {
        const Connection connection(bench.Port());
        connection.Send(Stream());
        return connection.ReadUntil("\r\n\r\n");
    };
    EXPECT_THAT(oneMore(), StartsWith("HTTP/1.1 503"));
    EXPECT_EQ(bench.Get("/state").first, 200);
    streams.clear();
    std::string answer;
    for (int i = 0; i < 100 && answer.substr(0, 12) != "HTTP/1.1 200"; ++i) {
        LiveBench::Wait(50);
        answer = oneMore();
    }
    EXPECT_THAT(answer, StartsWith("HTTP/1.1 200")) << "their places are free again";
}

TEST_F(LiveAccess, EndsAtOnceAtASignal) {
    Connection stream(bench.Port());
    stream.Send(Stream());
    stream.ReadUntil("event: all");
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(bench.Interrupt(), 143);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

TEST_F(LiveAccess, APortInUseIsToldInOneLine) {
    const CommandResult run = Simulate({"--serve", std::to_string(bench.Port())}, {"/bin/true"});
    EXPECT_EQ(run.status, 15);
    EXPECT_EQ(run.error,
              "simulate: --serve " + std::to_string(bench.Port()) +
                  ": the port cannot be had; takes another, or none for any that is free\n");
    EXPECT_EQ(run.output, "");
}

} // namespace
} // namespace tavrelin
