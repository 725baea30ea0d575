#pragma once

#include <memory>

#include <QLibrary>
#include <QObject>
#include <QString>

#include "core/HttpClient.h"

namespace tidemark {

// GET requests through the network module (QtHttpClient on QtNetwork), loaded at the first
// request, so that a session that never asks the network never maps QtNetwork. A module that
// cannot be loaded fails every request with the reason in words.
class ModuleHttpClient final : public HttpClient {
 public:
  // The module's file, absolute or relative to the executable's folder.
  explicit ModuleHttpClient(QString modulePath = defaultModulePath());
  ~ModuleHttpClient() override;
  ModuleHttpClient(const ModuleHttpClient&) = delete;
  ModuleHttpClient& operator=(const ModuleHttpClient&) = delete;

  void get(const HttpRequest& request, std::function<void(HttpResponse)> completion) override;

  // Where the app looks: beside the executable as built and as installed.
  static QString defaultModulePath();

 private:
  QLibrary library_;
  std::unique_ptr<HttpClient> client_;  // made by the module; gone before the library
  QString failure_;                     // why the module could not be loaded
  QObject context_;                     // failures not yet told die with the client
};

}  // namespace tidemark
