#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tidemark {

struct HttpRequest {
  std::string url;
  std::vector<std::pair<std::string, std::string>> headers;
  double timeout = 60;  // seconds without progress before the request is given up
  // The most body bytes read; a longer answer is aborted and fails as a transport error.
  size_t maxBytes = 8 << 20;
};

struct HttpResponse {
  std::optional<int> status;        // none: no HTTP response arrived
  std::optional<std::string> body;  // none: no data
  // The transport failure, in words for the user; also set when the transfer broke off after
  // the status line arrived. A response with an error carries no body.
  std::optional<std::string> error;
};

// GET requests; the completion runs once, on the main thread, never inside get().
class HttpClient {
 public:
  virtual ~HttpClient() = default;
  virtual void get(const HttpRequest& request, std::function<void(HttpResponse)> completion) = 0;
};

}  // namespace tidemark
