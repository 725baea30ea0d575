#pragma once

#include <functional>
#include <string>

namespace tidemark {

struct NotificationRequest {
  std::string identifier;  // a later request with the same identifier replaces the earlier one
  std::string title;
  std::string body;
};

// The desktop's notification service. Every completion runs on the main thread.
class Notifier {
 public:
  virtual ~Notifier() = default;
  // Whether notifications may be posted right now, without asking the user.
  virtual void queryAuthorization(std::function<void(bool authorized)> completion) = 0;
  // Asks for permission to post alerts with sound.
  virtual void requestAuthorization(std::function<void(bool granted)> completion) = 0;
  // Posts at once; the completion runs when the service has taken it or refused it.
  virtual void add(const NotificationRequest& request, std::function<void()> completion) = 0;
  // Withdraws pending and shown notifications with this identifier.
  virtual void remove(const std::string& identifier) = 0;
};

}  // namespace tidemark

namespace tidemark {

// For runs that post nothing: never authorised, every request completes at once.
class NullNotifier final : public Notifier {
 public:
  void queryAuthorization(std::function<void(bool)> completion) override { completion(false); }
  void requestAuthorization(std::function<void(bool)> completion) override { completion(false); }
  void add(const NotificationRequest&, std::function<void()> completion) override { completion(); }
  void remove(const std::string&) override {}
};

}  // namespace tidemark
