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
};

struct HttpResponse {
  std::optional<int> status;         // none: no HTTP response arrived
  std::optional<std::string> body;   // none: no data
  std::optional<std::string> error;  // the transport failure, in words for the user
};

// GET requests; the completion runs once, on the main thread, never inside get().
class HttpClient {
 public:
  virtual ~HttpClient() = default;
  virtual void get(const HttpRequest& request, std::function<void(HttpResponse)> completion) = 0;
};

}  // namespace tidemark
