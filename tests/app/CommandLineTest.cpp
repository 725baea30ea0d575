// The tidemark binary as a user runs it, in a home of its own.

#include <gtest/gtest.h>

#include <fstream>

#include <QProcess>

#include "core/FileIO.h"
#include "core/Json.h"
#include "support/Fakes.h"

namespace tidemark {
namespace {

struct Outcome {
  int code = -1;
  std::string out, err;
};

class CommandLine : public testing::Test {
 protected:
  Outcome run(const QStringList& arguments) {
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "TMPDIR"}) {
      const auto dir = home.path() / name;
      std::filesystem::create_directories(dir);
      environment.insert(QString::fromLatin1(name), QString::fromStdString(dir.string()));
    }
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(TIDEMARK_BINARY), arguments);
    EXPECT_TRUE(process.waitForFinished(30000));
    return {process.exitCode(), process.readAllStandardOutput().toStdString(),
            process.readAllStandardError().toStdString()};
  }
  // Files below the private home, other than the folders made for the run.
  std::vector<std::string> filesLeft() const {
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(home.path()))
      if (!entry.is_directory()) files.push_back(entry.path().lexically_relative(home.path()));
    return files;
  }
  test::TemporaryFolder home;
};

TEST_F(CommandLine, ExitStatusesAndMessages) {
  const std::tuple<QStringList, int, const char*, const char*> cases[] = {
      {{QStringLiteral("--version")}, 0, "tidemark 0.1.0\n", ""},
      {{QStringLiteral("--bogus")}, 2, "", "tidemark: Unknown option 'bogus'. See --help.\n"},
      {{QStringLiteral("--self-test"), QStringLiteral("--json")},
       2,
       "",
       "tidemark: --self-test takes no other option See --help.\n"},
      {{QStringLiteral("extra")}, 2, "", "tidemark: unexpected argument 'extra' See --help.\n"},
  };
  for (const auto& [arguments, code, out, err] : cases) {
    Outcome result = run(arguments);
    EXPECT_EQ(result.code, code) << arguments.join(u' ').toStdString();
    EXPECT_EQ(result.out, out);
    EXPECT_EQ(result.err, err);
  }
  EXPECT_TRUE(run({QStringLiteral("--help")}).out.find("--self-test") != std::string::npos);
}

TEST_F(CommandLine, SelfTestLeavesNothingBehind) {
  Outcome result = run({QStringLiteral("--self-test")});
  EXPECT_EQ(result.code, 0) << result.err;
  EXPECT_EQ(result.out, "All model checks passed\n");
  EXPECT_EQ(filesLeft(), std::vector<std::string>{});
  EXPECT_FALSE(std::filesystem::exists(home.path() / "XDG_CONFIG_HOME" / "Tidemark"));
}

TEST_F(CommandLine, QuotesShowTheDefaultWatchlistAndStoreNothing) {
  Outcome table = run({QStringLiteral("--quotes")});
  EXPECT_EQ(table.code, 0) << table.err;
  EXPECT_TRUE(table.out.starts_with(
      "代码    名称          市场          价格  涨跌幅    成交量  来源  状态\n"
      "600519  贵州茅台      A股       1,468.80  +1.16%     3.2万  mock  实时\n"))
      << table.out;
  EXPECT_NE(table.out.find("\n000858  五粮液"), std::string::npos);
  EXPECT_NE(table.out.find("行情源：模拟源 · 实时 · 更新于 "), std::string::npos);

  Outcome json = run({QStringLiteral("--quotes"), QStringLiteral("--json")});
  auto document = json::parse(json.out);
  ASSERT_TRUE(document) << json.out;
  EXPECT_EQ((*document)["phase"], "live");
  EXPECT_EQ((*document)["lastError"], nullptr);
  EXPECT_EQ((*document)["sourceLabel"], "模拟源");
  std::vector<std::string> ids;
  for (const auto& q : (*document)["quotes"]) ids.push_back(q["id"]);
  EXPECT_EQ(ids, (std::vector<std::string>{"600519", "00700", "NVDA", "03033", "000858"}));
  EXPECT_EQ((*document)["quotes"][1]["market"], "港股");
  EXPECT_EQ(filesLeft(), std::vector<std::string>{});
}

TEST_F(CommandLine, QuotesReadTheUsersWatchlistWithoutWritingIt) {
  const auto file = home.path() / "XDG_DATA_HOME" / "Tidemark" / "watchlist.json";
  std::filesystem::create_directories(file.parent_path());
  const std::string saved = R"({"version":1,"exportedAt":800000000,"symbols":["AAPL","00700"]})";
  std::ofstream(file) << saved;
  Outcome result = run({QStringLiteral("--quotes")});
  EXPECT_EQ(result.code, 0) << result.err;
  EXPECT_NE(result.out.find("\nAAPL   苹果      美股  229.95"), std::string::npos) << result.out;
  EXPECT_NE(result.out.find("\n00700  腾讯控股"), std::string::npos);
  EXPECT_EQ(result.out.find("600519"), std::string::npos);
  std::error_code error;
  EXPECT_EQ(readFile(file, error), saved);
  EXPECT_EQ(filesLeft(), std::vector<std::string>{"XDG_DATA_HOME/Tidemark/watchlist.json"});
}

}  // namespace
}  // namespace tidemark
