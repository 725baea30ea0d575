#include "platform/QtHttpClient.h"

#include <cmath>

#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>
#include <QUrl>

namespace tidemark {

std::string describeNetworkError(int networkError, const std::string& fallback) {
  switch (static_cast<QNetworkReply::NetworkError>(networkError)) {
    case QNetworkReply::ConnectionRefusedError:
      return "无法连接服务器（连接被拒绝）";
    case QNetworkReply::RemoteHostClosedError:
      return "服务器意外断开了连接";
    case QNetworkReply::HostNotFoundError:
      return "找不到行情服务器";
    case QNetworkReply::TimeoutError:
    case QNetworkReply::OperationCanceledError:  // what a transfer timeout reports
      return "请求超时";
    case QNetworkReply::SslHandshakeFailedError:
      return "无法建立安全连接";
    case QNetworkReply::TemporaryNetworkFailureError:
    case QNetworkReply::NetworkSessionFailedError:
      return "网络连接已中断";
    case QNetworkReply::ProtocolUnknownError:
      return "不支持的地址协议";
    default:
      return "网络错误：" + fallback;
  }
}

void QtHttpClient::get(const HttpRequest& request, std::function<void(HttpResponse)> completion) {
  QNetworkRequest networkRequest(QUrl(QString::fromStdString(request.url), QUrl::StrictMode));
  for (const auto& [name, value] : request.headers)
    networkRequest.setRawHeader(QByteArray::fromStdString(name), QByteArray::fromStdString(value));
  networkRequest.setTransferTimeout(static_cast<int>(std::lround(request.timeout * 1000)));
  QNetworkReply* reply = manager_.get(networkRequest);
  QObject::connect(
      reply, &QNetworkReply::finished, reply, [reply, completion = std::move(completion)] {
        reply->deleteLater();
        HttpResponse response;
        const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
        if (status.isValid()) {
          // An HTTP answer, whatever its status; Qt calls 4xx and 5xx errors too.
          response.status = status.toInt();
          response.body = reply->readAll().toStdString();
        } else if (reply->error() != QNetworkReply::NoError) {
          response.error = describeNetworkError(reply->error(), reply->errorString().toStdString());
        }
        completion(std::move(response));
      });
}

}  // namespace tidemark
