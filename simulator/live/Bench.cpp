#include "simulator/live/Bench.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <fstream>
#include <httplib.h>
#include <iterator>
#include <new>
#include <sys/mman.h>
#include <sys/random.h>
#include <thread>
#include <unistd.h>

namespace sim {
namespace {

using httplib::Request;
using httplib::Response;

constexpr int kMostStreams = 16;
constexpr std::size_t kThreads = 48;
constexpr std::size_t kLongestBody = 4096;
constexpr time_t kSeconds = 2; // of patience with a connection

/// What the page consists of, and nothing else is read from a file.
constexpr std::array<std::array<const char*, 3>, 4> kFiles{{
    {"/", "index.html", "text/html; charset=utf-8"},
    {"/bench.css", "bench.css", "text/css; charset=utf-8"},
    {"/bench.js", "bench.js", "text/javascript; charset=utf-8"},
    {"/steps.json", "steps.json", "application/json"},
}};

constexpr const char* kJson = "application/json";

std::string NewToken() {
    std::array<unsigned char, 16> bytes{};
    if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
        return {};
    }
    std::string token;
    for (const unsigned char byte : bytes) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", byte);
        token += digits;
    }
    return token;
}

void Fail(Response& response, int status, const char* why) {
    response.status = status;
    response.set_content("{\"error\":" + JsonText(why) + "}", kJson);
}

/// The library ignores SIGPIPE as soon as there is a server; a program that is started then would
/// too.
class KeepsSignals {
  public:
    KeepsSignals() { sigaction(SIGPIPE, nullptr, &before_); }
    KeepsSignals(const KeepsSignals&) = delete;
    KeepsSignals& operator=(const KeepsSignals&) = delete;
    ~KeepsSignals() { sigaction(SIGPIPE, &before_, nullptr); }

  private:
    struct sigaction before_ {};
};

} // namespace

/// The requests that are answered, and all that is refused.
class Bench::Server {
  public:
    Server(LiveFeed& feed, LiveHand& hand, std::string pages)
        : feed_(feed), hand_(hand), pages_(std::move(pages)), token_(NewToken()) {
        Limit();
        http_.set_pre_routing_handler([this](const Request& request, Response& response) {
            return Admit(request, response) ? httplib::Server::HandlerResponse::Unhandled
                                            : httplib::Server::HandlerResponse::Handled;
        });
        for (const auto& file : kFiles) {
            http_.Get(file[0], [this, file](const Request&, Response& response) {
                std::ifstream text(pages_ + "/" + file[1], std::ios::binary);
                response.set_content({std::istreambuf_iterator<char>(text), {}}, file[2]);
                response.status = text.is_open() ? 200 : 404;
            });
        }
        http_.Get("/state", [this](const Request&, Response& response) {
            response.set_content(feed_.All(), kJson);
        });
        http_.Get("/scenario", [this](const Request&, Response& response) {
            response.set_header("Content-Disposition", "attachment; filename=\"bench.toml\"");
            response.set_content(hand_.Scenario(), "application/toml");
        });
        http_.Get("/events", [this](const Request&, Response& response) { Stream(response); });
        http_.Post("/do", [this](const Request& request, Response& response) {
            const LiveHand::Answer answer = hand_.Do(request.body);
            response.status = answer.status;
            response.set_content(answer.json, kJson);
        });
    }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;
    ~Server() {
        http_.stop();
        if (thread_.joinable()) {
            thread_.join();
        }
    }

    bool Take(int port) {
        port_ = port == 0                               ? http_.bind_to_any_port("127.0.0.1")
                : http_.bind_to_port("127.0.0.1", port) ? port
                                                        : -1;
        return port_ > 0 && !token_.empty();
    }
    void Start() {
        std::signal(SIGPIPE, SIG_IGN);
        thread_ = std::thread([this] { http_.listen_after_bind(); });
        // Before it runs, it could not be stopped.
        for (int i = 0; i < 1000 && !http_.is_running(); ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
    std::string Address() const {
        return "http://127.0.0.1:" + std::to_string(port_) + "/?token=" + token_;
    }

  private:
    void Limit() {
        // Of the library's own options, sharing the port with others is not wanted.
        http_.set_socket_options([](int socket) {
            const int yes = 1;
            setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
            fcntl(socket, F_SETFD, FD_CLOEXEC);
        });
        http_.new_task_queue = [] { return new httplib::ThreadPool(kThreads); };
        http_.set_read_timeout(kSeconds);
        http_.set_write_timeout(kSeconds);
        http_.set_keep_alive_timeout(kSeconds);
        http_.set_payload_max_length(kLongestBody);
        http_.set_tcp_nodelay(true);
        http_.set_default_headers(
            {{"Cache-Control", "no-store"},
             {"X-Content-Type-Options", "nosniff"},
             {"Referrer-Policy", "no-referrer"},
             {"Content-Security-Policy", "default-src 'none'; script-src 'self'; style-src 'self'; "
                                         "connect-src 'self'; img-src 'self' data:; "
                                         "frame-ancestors 'none'; base-uri 'none'; "
                                         "form-action 'none'"}});
        http_.set_error_handler([](const Request&, Response& response) {
            if (response.body.empty()) {
                const bool tooLong = response.status == 413;
                Fail(response, tooLong ? 400 : response.status,
                     tooLong ? "the body is too long" : "nothing of this name is served");
            }
        });
    }

    /// True for a host of ours: a page elsewhere whose name leads here has another.
    bool IsOurs(const std::string& host) const {
        const std::string port = ":" + std::to_string(port_);
        return std::any_of(kHosts.begin(), kHosts.end(), [&](const std::string& name) {
            return host == name + port || (port_ == 80 && host == name);
        });
    }

    bool Admit(const Request& request, Response& response) const {
        const std::string origin = request.get_header_value("Origin");
        constexpr std::string_view scheme = "http://";
        const bool foreign =
            request.has_header("Origin") &&
            (origin.rfind(scheme, 0) != 0 || !IsOurs(origin.substr(scheme.size())));
        if (request.get_header_value_count("Host") != 1 ||
            !IsOurs(request.get_header_value("Host")) || foreign) {
            Fail(response, 403, "for pages of this address only");
            return false;
        }
        const bool file = std::any_of(kFiles.begin(), kFiles.end(),
                                      [&](const auto& known) { return request.path == known[0]; });
        const std::string token = request.method == "POST" ? request.get_header_value("X-Token")
                                                           : request.get_param_value("token");
        if ((!file || request.method == "POST") && token != token_) {
            Fail(response, 403, "needs the token of the printed address");
            return false;
        }
        return true;
    }

    void Stream(Response& response) {
        if (++streams_ > kMostStreams) {
            --streams_;
            Fail(response, 503, "too many pages look already");
            return;
        }
        response.set_chunked_content_provider(
            "text/event-stream",
            [this, seen = std::uint64_t{0}](std::size_t, httplib::DataSink& sink) mutable {
                const std::string text = feed_.Next(seen);
                return !text.empty() && http_.is_running() && sink.write(text.data(), text.size());
            },
            [this](bool) { --streams_; });
    }

    inline static const std::array<std::string, 2> kHosts{"127.0.0.1", "localhost"};

    LiveFeed& feed_;
    LiveHand& hand_;
    std::string pages_;
    std::string token_;
    int port_ = -1;
    std::atomic<int> streams_{0};
    httplib::Server http_;
    std::thread thread_;
};

Bench::Bench(const BenchSetup& setup) : descriptor_(memfd_create("live-link", 0)) {
    void* page =
        descriptor_ < 0 || ftruncate(descriptor_, sizeof(LiveLink)) != 0
            ? MAP_FAILED
            : mmap(nullptr, sizeof(LiveLink), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor_, 0);
    if (page == MAP_FAILED) {
        problem_ = "no memory to share with the program";
        return;
    }
    auto* const link = new (page) LiveLink;
    feed_ = std::make_unique<LiveFeed>(*link, setup.cardFolder);
    hand_ = std::make_unique<LiveHand>(*link, *feed_, setup.scenario, setup.command);
    const KeepsSignals kept;
    server_ = std::make_unique<Server>(*feed_, *hand_, setup.pages);
    if (!server_->Take(setup.port)) {
        problem_ = "--serve " + std::to_string(setup.port) +
                   ": the port cannot be had; takes another, or none for any that is free";
    }
}

Bench::~Bench() {
    if (feed_) {
        feed_->Stop();
    }
}

std::string Bench::Address() const {
    return server_->Address();
}

void Bench::Start() {
    feed_->Start();
    server_->Start();
}

void Bench::End(const std::string& reason) {
    feed_->End(reason);
}

} // namespace sim
