#pragma once

#include <QNetworkAccessManager>

#include "core/HttpClient.h"

namespace tidemark {

// GET requests on QNetworkAccessManager; completions arrive through the event loop.
class QtHttpClient final : public HttpClient {
 public:
  void get(const HttpRequest& request, std::function<void(HttpResponse)> completion) override;

 private:
  QNetworkAccessManager manager_;  // owns the replies: none outlives the client
};

// The user's words for a transport failure.
std::string describeNetworkError(int networkError, const std::string& fallback);

}  // namespace tidemark
