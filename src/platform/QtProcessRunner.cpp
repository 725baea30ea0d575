#include "platform/QtProcessRunner.h"

#include "platform/CappedBuffer.h"

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <optional>
#include <string>

#include <QProcess>
#include <QTimer>

namespace tidemark {
namespace {

// The "VmRSS:   123456 kB" line of /proc/PID/status; none where there is no such file.
std::optional<size_t> residentBytes(qint64 pid) {
  std::ifstream status("/proc/" + std::to_string(pid) + "/status");
  for (std::string line; std::getline(status, line);) {
    if (!line.starts_with("VmRSS:")) continue;
    return static_cast<size_t>(std::strtoull(line.c_str() + 6, nullptr, 10)) * 1024;
  }
  return std::nullopt;
}

}  // namespace

QtProcessRunner::QtProcessRunner(size_t maxResidentBytes) : maxResidentBytes_(maxResidentBytes) {}

QtProcessRunner::~QtProcessRunner() {
  // Children must not outlive the application; nobody is told about them any more.
  for (QProcess* process : context_.findChildren<QProcess*>()) {
    process->disconnect();
    process->kill();
    process->waitForFinished(1000);
  }
}

namespace {

// A process set up to run the request: program, arguments, folder and the environment it names
// only; standard error and input go nowhere.
QProcess* preparedProcess(const ProcessRequest& request, QObject& context) {
  auto* process = new QProcess(&context);
  process->setProgram(QString::fromStdString(request.program));
  QStringList arguments;
  for (const std::string& argument : request.arguments)
    arguments << QString::fromStdString(argument);
  process->setArguments(arguments);
  process->setWorkingDirectory(QString::fromStdString(request.workingDirectory));
  QProcessEnvironment environment;
  for (const auto& [name, value] : request.environment)
    environment.insert(QString::fromStdString(name), QString::fromStdString(value));
  process->setProcessEnvironment(environment);
  process->setStandardErrorFile(QProcess::nullDevice());
  process->setStandardInputFile(QProcess::nullDevice());
  return process;
}

}  // namespace

void QtProcessRunner::run(const ProcessRequest& request,
                          std::function<void(ProcessResult)> completion) {
  QProcess* process = preparedProcess(request, context_);

  struct State {
    std::function<void(ProcessResult)> completion;
    CappedBuffer output;  // read as it comes, so the pipe never holds more than the cap
    bool timedOut = false;
    bool overMemory = false;  // killed for its resident memory
    bool done = false;
  };
  auto state =
      std::make_shared<State>(State{std::move(completion), CappedBuffer(request.maxOutput)});
  const auto finish = [process, state](ProcessResult result) {
    if (state->done) return;
    state->done = true;
    process->deleteLater();
    state->completion(std::move(result));
  };

  QObject::connect(process, &QProcess::readyReadStandardOutput, process, [process, state] {
    if (!state->output.append(process->readAllStandardOutput())) process->kill();
  });

  auto* deadline = new QTimer(process);
  deadline->setSingleShot(true);
  QObject::connect(deadline, &QTimer::timeout, process, [process, state] {
    if (process->state() == QProcess::NotRunning) return;
    state->timedOut = true;
    process->terminate();
    QTimer::singleShot(1000, process, [process] { process->kill(); });
  });

  if (maxResidentBytes_ > 0) {
    auto* watch = new QTimer(process);
    QObject::connect(watch, &QTimer::timeout, process,
                     [process, state, watch, bound = maxResidentBytes_] {
                       const auto resident = residentBytes(process->processId());
                       if (!resident) return watch->stop();  // gone, or no /proc here
                       if (*resident <= bound) return;
                       watch->stop();
                       state->overMemory = true;
                       process->kill();
                     });
    QObject::connect(process, &QProcess::started, watch, [watch] { watch->start(memoryCheckMS); });
  }

  QObject::connect(process, &QProcess::errorOccurred, process,
                   [process, finish](QProcess::ProcessError error) {
                     if (error != QProcess::FailedToStart) return;
                     ProcessResult result;
                     result.launchError = process->errorString().toStdString();
                     // start() may report this before it returns; answer on a later turn.
                     QMetaObject::invokeMethod(
                         process, [finish, result] { finish(result); }, Qt::QueuedConnection);
                   });
  QObject::connect(process, &QProcess::finished, process,
                   [process, state, finish](int exitCode, QProcess::ExitStatus status) {
                     ProcessResult result;
                     result.exitCode = exitCode;
                     const bool tooLarge = !state->output.append(process->readAllStandardOutput());
                     result.exitedNormally = status == QProcess::NormalExit && !state->timedOut &&
                                             !tooLarge && !state->overMemory;
                     result.timedOut = state->timedOut;
                     result.outputTooLarge = tooLarge;
                     // Whatever a child printed before it was killed for its memory is cut off.
                     if (!state->overMemory) result.standardOutput = state->output.take();
                     finish(std::move(result));
                   });
  process->start();
  deadline->start(static_cast<int>(std::lround(request.deadline * 1000)));
}

}  // namespace tidemark
