#include "platform/ModuleHttpClient.h"

#include <QCoreApplication>
#include <QDir>
#include <QTimer>

namespace tidemark {

QString ModuleHttpClient::defaultModulePath() {
  return QStringLiteral(TIDEMARK_NETWORK_MODULE);
}

ModuleHttpClient::ModuleHttpClient(QString modulePath) {
  if (QDir::isRelativePath(modulePath))
    modulePath = QDir(QCoreApplication::applicationDirPath()).absoluteFilePath(modulePath);
  library_.setFileName(QDir::cleanPath(modulePath));
}

// The module stays loaded to the end of the process: Qt's network thread may still hold its code.
ModuleHttpClient::~ModuleHttpClient() = default;

void ModuleHttpClient::get(const HttpRequest& request,
                           std::function<void(HttpResponse)> completion) {
  if (!client_ && failure_.isEmpty()) {
    using Create = HttpClient* (*)();
    auto create = reinterpret_cast<Create>(library_.resolve("tidemarkCreateHttpClient"));
    if (create)
      client_.reset(create());
    else
      failure_ = library_.errorString();
  }
  if (client_) return client_->get(request, std::move(completion));
  HttpResponse failed;
  failed.error = "网络模块无法加载：" + failure_.toStdString();
  QTimer::singleShot(0, &context_,
                     [failed, completion = std::move(completion)] { completion(failed); });
}

}  // namespace tidemark
