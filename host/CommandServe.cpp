// mhhost serve: the search page and its JSON API, on the loopback addresses only. Every
// request must carry the token printed at the start, so that other users of the machine and
// web pages in the person's browser can't read the mail; the Host header is checked too, so
// that a name rebound to 127.0.0.1 can't reach it.
#include "host/Commands.h"
#include "host/ExitStatus.h"
#include "host/IndexRunner.h"
#include "host/JsonText.h"
#include "host/ServeApi.h"
#include "host/TurnGate.h"
#include "host/WebFiles.h"

#include <httplib.h>

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace {

// Enough for many browsers' connections; the searches they ask for take turns (TurnGate).
constexpr size_t kThreads = 64;

const char kPolicy[] = "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; "
                       "connect-src 'self'; base-uri 'none'; form-action 'none'; "
                       "frame-ancestors 'none'";

// 32 bytes of /dev/urandom in hex; empty when it can't be read.
std::string newToken() {
  unsigned char bytes[32];
  const int file = open("/dev/urandom", O_RDONLY | O_CLOEXEC);
  if (file < 0)
    return "";
  const bool read = ::read(file, bytes, sizeof bytes) == static_cast<ssize_t>(sizeof bytes);
  close(file);
  if (!read)
    return "";
  std::string token;
  for (const unsigned char byte : bytes) {
    char digits[3];
    std::snprintf(digits, sizeof digits, "%02x", byte);
    token += digits;
  }
  return token;
}

// Compares in a time that does not tell how much of the token a guess got right.
bool sameToken(const std::string &given, const std::string &token) {
  if (given.size() != token.size())
    return false;
  unsigned char difference = 0;
  for (size_t i = 0; i < token.size(); ++i)
    difference |= static_cast<unsigned char>(given[i] ^ token[i]);
  return difference == 0;
}

void answer(httplib::Response &response, const ApiAnswer &answer) {
  response.status = answer.status;
  response.set_content(answer.json, "application/json; charset=utf-8");
}

// The page's own file `name`. The page asks for its script and styles before any script of it
// runs, so the token those requests need is written into the page: "{{token}}" in a file
// becomes the token.
void serveFile(httplib::Response &response, const std::string &name, const std::string &token) {
  const WebFile *const file = findWebFile(name);
  if (file == nullptr) {
    answer(response, {404, jsonText({{"error", "not found"}})});
    return;
  }
  std::string content(reinterpret_cast<const char *>(file->bytes), file->size);
  const std::string mark = "{{token}}";
  for (size_t at = content.find(mark); at != std::string::npos; at = content.find(mark, at))
    content.replace(at, mark.size(), token);
  response.set_content(content, file->type);
}

class SearchServer {
public:
  SearchServer(const HostSettings &settings, std::string token)
      : settings_(settings), token_(std::move(token)), index_(settings.databasePath),
        runner_(settings) {}

  // Binds 127.0.0.1 at `port` (0: any free one) and ::1 at the same port. False when the
  // first can't be bound.
  bool bind(int port) {
    for (httplib::Server *server : {&ipv4_, &ipv6_})
      setUp(*server);
    port_ = port == 0 ? ipv4_.bind_to_any_port("127.0.0.1") : port;
    if (port_ <= 0 || (port != 0 && !ipv4_.bind_to_port("127.0.0.1", port)))
      return false;
    listenWithBacklog(ipv4Socket_);
    ipv6Bound_ = ipv6_.bind_to_port("::1", port_);
    if (ipv6Bound_)
      listenWithBacklog(ipv6Socket_);
    index_.warm();
    return true;
  }
  int port() const { return port_; }
  bool ipv6Bound() const { return ipv6Bound_; }

  // Serves until the process ends.
  void listen() {
    std::thread ipv6([this] {
      if (ipv6Bound_)
        ipv6_.listen_after_bind();
    });
    ipv4_.listen_after_bind();
    ipv6.join();
  }

private:
  bool allowedHost(const std::string &host) const {
    const std::string port = ":" + std::to_string(port_);
    return host == "localhost" + port || host == "127.0.0.1" + port || host == "[::1]" + port;
  }

  // The library listens with a backlog of 5: of fifty clients that connect at once, most
  // would have their first attempt dropped and retried a second later. Its socket listens
  // again with the system's backlog.
  static void listenWithBacklog(int socket) {
    if (socket >= 0)
      ::listen(socket, SOMAXCONN);
  }

  void setUp(httplib::Server &server) {
    int &socket = &server == &ipv4_ ? ipv4Socket_ : ipv6Socket_;
    // Not the library's SO_REUSEPORT, with which another program could take the port too.
    server.set_socket_options([&socket](int made) {
      const int yes = 1;
      setsockopt(made, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
      socket = made;
    });
    // A thread serves one connection at a time, and a browser keeps several open.
    server.new_task_queue = [] { return new httplib::ThreadPool(kThreads); };
    server.set_keep_alive_max_count(1000);
    server.set_default_headers({{"Content-Security-Policy", kPolicy},
                                {"X-Content-Type-Options", "nosniff"},
                                {"Referrer-Policy", "no-referrer"},
                                {"Cache-Control", "no-store"}});
    server.set_pre_routing_handler(
        [this](const httplib::Request &request, httplib::Response &response) {
          const char *refusal = nullptr;
          if (!allowedHost(request.get_header_value("Host")))
            refusal = "this server answers only to localhost";
          else if (!sameToken(request.get_param_value("token"), token_))
            refusal = "the token is missing or wrong: open the address mhhost serve printed";
          else if (request.method != "GET" &&
                   !sameToken(request.get_header_value("X-Tuk-Token"), token_))
            refusal = "the X-Tuk-Token header is missing or wrong";
          if (refusal == nullptr)
            return httplib::Server::HandlerResponse::Unhandled;
          answer(response, {403, jsonText({{"error", refusal}})});
          return httplib::Server::HandlerResponse::Handled;
        });
    server.set_error_handler([](const httplib::Request &, httplib::Response &response) {
      if (response.body.empty())
        answer(response,
               {response.status,
                jsonText({{"error",
                           response.status == 404 ? "not found" : "the request can't be read"}})});
    });
    server.Get("/", [this](const httplib::Request &, httplib::Response &response) {
      serveFile(response, "index.html", token_);
    });
    // A plain name only: nothing that could leave the embedded files.
    server.Get(R"(/static/([A-Za-z0-9_-]+\.[A-Za-z0-9]+))",
               [this](const httplib::Request &request, httplib::Response &response) {
                 serveFile(response, request.matches[1], token_);
               });
    server.Get("/api/search", [this](const httplib::Request &request, httplib::Response &response) {
      ApiParams params;
      for (const auto &entry : request.params)
        params.emplace(entry.first, entry.second);
      const TurnGate::Turn turn(searches_);
      answer(response, searchAnswer(index_, params));
    });
    server.Get(R"(/api/message/([0-9]+))",
               [this](const httplib::Request &request, httplib::Response &response) {
                 const TurnGate::Turn turn(searches_);
                 answer(response, messageAnswer(index_, request.matches[1]));
               });
    server.Get("/api/stores", [this](const httplib::Request &, httplib::Response &response) {
      answer(response, storesAnswer(index_));
    });
    server.Post("/api/index", [this](const httplib::Request &, httplib::Response &response) {
      answer(response, runner_.start()
                           ? ApiAnswer{202, jsonText({{"started", true}})}
                           : ApiAnswer{409, jsonText({{"error", "an index run is under way"}})});
    });
    server.Get("/api/index/events", [this](const httplib::Request &, httplib::Response &response) {
      auto cursor = std::make_shared<IndexRunner::Cursor>();
      response.set_chunked_content_provider(
          "text/event-stream", [this, cursor](size_t, httplib::DataSink &sink) {
            const std::string text = runner_.next(*cursor, std::chrono::seconds(15));
            return sink.write(text.data(), text.size());
          });
    });
  }

  const HostSettings settings_;
  const std::string token_;
  ServedIndex index_;
  // Twice the processors: a search waits on locks and on reading mailboxes too. Fewer left
  // processors idle; more made the slowest searches slower.
  TurnGate searches_{2 * std::thread::hardware_concurrency()};
  IndexRunner runner_;
  httplib::Server ipv4_, ipv6_;
  int port_ = 0;
  bool ipv6Bound_ = false;
  int ipv4Socket_ = -1, ipv6Socket_ = -1;
};

bool readPort(const std::string &text, int &port) {
  if (text.empty() || text.size() > 5 || text.find_first_not_of("0123456789") != text.npos)
    return false;
  port = std::atoi(text.c_str());
  return port <= 65535;
}

} // namespace

int runServe(const CommandLine &line, const HostSettings &settings) {
  int port = 0;
  if (line.has("port") && !readPort(line.value("port"), port))
    return reportUsageError("serve", "--port wants a number from 0 to 65535");
  const std::string token = newToken();
  if (token.empty())
    return reportError("cannot read /dev/urandom for the server's token");
  SearchServer server(settings, token);
  if (!server.bind(port))
    return reportError("cannot listen on 127.0.0.1 port " + std::to_string(port));
  const std::string query = "/?token=" + token;
  const std::string url = "http://127.0.0.1:" + std::to_string(server.port()) + query;
  std::printf("Serving the index at %s\n", url.c_str());
  if (server.ipv6Bound())
    std::printf("Serving the index at http://[::1]:%d%s\n", server.port(), query.c_str());
  std::fflush(stdout);
  if (line.has("open")) {
    const std::string command = "xdg-open '" + url + "' >/dev/null 2>&1 &";
    if (std::system(command.c_str()) != 0)
      reportWarning("xdg-open could not be started; open the address yourself");
  }
  server.listen();
  return kExitOk;
}
