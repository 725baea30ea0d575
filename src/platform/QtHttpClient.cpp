#include "platform/QtHttpClient.h"

#include "platform/CappedBuffer.h"

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

namespace {

// Errors Qt derives from an HTTP status: the answer itself arrived whole.
bool isStatusError(QNetworkReply::NetworkError error) {
  const int code = error;
  return (code >= 201 && code <= 299) || error == QNetworkReply::ProtocolInvalidOperationError ||
         (code >= 401 && code <= 499);
}

// An idle timeout alone lets a server that trickles bytes hold a request for ever.
constexpr int wholeRequestTimeouts = 3;

}  // namespace

void QtHttpClient::get(const HttpRequest& request, std::function<void(HttpResponse)> completion) {
  QNetworkRequest networkRequest(QUrl(QString::fromStdString(request.url), QUrl::StrictMode));
  for (const auto& [name, value] : request.headers)
    networkRequest.setRawHeader(QByteArray::fromStdString(name), QByteArray::fromStdString(value));
  const int timeoutMS = static_cast<int>(std::lround(request.timeout * 1000));
  networkRequest.setTransferTimeout(timeoutMS);
  if (!manager_) manager_ = std::make_unique<QNetworkAccessManager>();
  QNetworkReply* reply = manager_->get(networkRequest);
  // Qt's network thread reads ahead without bound unless told; a server that floods the socket
  // would otherwise fill memory long before the cap below is seen.
  reply->setReadBufferSize(256 << 10);

  // The body is moved out of Qt's buffer as it arrives, so no more than the cap is ever held.
  struct Transfer {
    explicit Transfer(size_t cap) : body(cap) {}
    CappedBuffer body;
    bool expired = false;
  };
  auto transfer = std::make_shared<Transfer>(request.maxBytes);
  const auto take = [reply, transfer] {
    if (transfer->body.overflowed() || !reply->isOpen()) return;
    if (!transfer->body.append(reply->readAll())) reply->abort();
  };
  QObject::connect(reply, &QNetworkReply::readyRead, reply, take);
  QObject::connect(reply, &QNetworkReply::metaDataChanged, reply, [reply, transfer] {
    const QVariant length = reply->header(QNetworkRequest::ContentLengthHeader);
    if (length.isValid() && length.toULongLong() > transfer->body.cap() &&
        !transfer->body.overflowed()) {
      transfer->body.overflow();
      reply->abort();
    }
  });
  auto* deadline = new QTimer(reply);
  deadline->setSingleShot(true);
  QObject::connect(deadline, &QTimer::timeout, reply, [reply, transfer] {
    transfer->expired = true;
    reply->abort();
  });
  deadline->start(timeoutMS * wholeRequestTimeouts);

  QObject::connect(
      reply, &QNetworkReply::finished, reply,
      [reply, transfer, take, completion = std::move(completion)] {
        reply->deleteLater();
        take();
        HttpResponse response;
        if (const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
            status.isValid())
          response.status = status.toInt();
        const QNetworkReply::NetworkError error = reply->error();
        if (transfer->body.overflowed()) {
          response.error = "服务器返回的数据过大";
        } else if (transfer->expired) {
          response.error = "请求超时";
        } else if (error != QNetworkReply::NoError && !isStatusError(error)) {
          // Also when the status line came and the body broke off after it.
          response.error = describeNetworkError(error, reply->errorString().toStdString());
        } else if (response.status) {
          // An HTTP answer, whatever its status; Qt calls 4xx and 5xx errors too.
          response.body = transfer->body.take();
        }
        completion(std::move(response));
      });
}

}  // namespace tidemark
