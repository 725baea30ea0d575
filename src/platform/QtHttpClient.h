#pragma once

#include <memory>

#include <QNetworkAccessManager>

#include "core/HttpClient.h"

namespace tidemark {

// GET requests on QNetworkAccessManager; completions arrive through the event loop. Built into the
// network module, which the app loads at its first request (ModuleHttpClient).
class QtHttpClient final : public HttpClient {
 public:
  void get(const HttpRequest& request, std::function<void(HttpResponse)> completion) override;

 private:
  std::unique_ptr<QNetworkAccessManager> manager_;  // owns the replies: none outlives the client
};

// The user's words for a transport failure.
std::string describeNetworkError(int networkError, const std::string& fallback);

}  // namespace tidemark
