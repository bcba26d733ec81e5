#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <filesystem>
#include <functional>

#include "app/texts.h"
#include "net/file_downloader.h"
#include "support/raw_server.h"
#include "support/scoped_variable.h"
#include "support/scripted_message_boxes.h"
#include "support/temporary_folder.h"
#include "support/tls_server.h"

namespace orvalo::test {
namespace {

struct RecordingView : DownloadView {
  void ShowProgress(const std::string& text) override {
    if (texts.empty() || texts.back() != text) texts.push_back(text);
  }
  void RunMessages(std::int64_t milliseconds) override {
    if (milliseconds > 0 && milliseconds < 20) ADD_FAILURE() << milliseconds;
    if (on_run) on_run();
  }
  std::vector<std::string> texts;
  std::function<void()> on_run;
};

struct DownloadBench {
  DownloadResult Get(const std::string& url) {
    FileDownloader downloader(texts, boxes, options);
    downloader.SetLimit(limit);
    cancel = false;
    const auto result = downloader.Download(url, target, true, &view, cancel);
    error = downloader.error_text();
    return result;
  }
  std::string Error(int id, const std::string& first, const std::string& second = "") {
    return texts.Format(id, {first, second}).value();
  }

  const ScopedVariable no_desktop{"XDG_CURRENT_DESKTOP", "KDE"};  // and no such settings
  TemporaryFolder folder;
  const ScopedVariable no_settings{"XDG_CONFIG_HOME", folder.path().c_str()};
  Texts texts;
  ScriptedMessageBoxes boxes;
  RecordingView view;
  platform::HttpDownload::Options options;
  std::int64_t limit = INT64_MAX;
  std::string target = folder.File("temp/file");
  std::atomic<bool> cancel = false;
  std::string error;
};

std::string Header(int status, std::size_t length, const std::string& line = "") {
  return "HTTP/1.1 " + std::to_string(status) + " x\r\nContent-Length: " + std::to_string(length) +
         "\r\n" + line + "\r\n";
}

TEST(Download, TakesOnlyACompleteGoodAnswer) {
  DownloadBench bench;
  bench.options.stall_ms = 300;
  const std::string data(5000, 'd');
  std::string self;
  const struct {
    const char* what;
    std::function<void(RawServer::Connection&)> answer;
    int error;  // 0: done
  } cases[] = {
      {"good", [&](auto& c) { c.Send(Header(200, 5000) + data); }, 0},
      {"partial", [&](auto& c) { c.Send(Header(206, 5000) + data); }, 0},
      {"chunks",
       [&](auto& c) {
         c.Send("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n1388\r\n" + data +
                "\r\n0\r\n\r\n");
       },
       0},
      {"redirected",
       [&](auto& c) {
         c.Send(c.number() % 2 == 1 ? Header(302, 3, "Location: /x\r\n") + "foo"
                                    : Header(200, 5000) + data);
       },
       0},
      {"not found", [&](auto& c) { c.Send(Header(404, 5000) + data); }, 1267},
      {"not modified", [&](auto& c) { c.Send(Header(304, 0)); }, 1267},
      {"server error", [&](auto& c) { c.Send(Header(500, 0)); }, 1267},
      {"short", [&](auto& c) { c.Send(Header(200, 5001) + data); }, 1267},
      {"short chunks",
       [&](auto& c) {
         c.Send("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n1388\r\n" + data);
       },
       1267},
      {"reset",
       [&](auto& c) {
         c.Send(Header(200, 9000) + data);
         c.ResetAtEnd();
       },
       1267},
      {"stalls",
       [&](auto& c) {
         c.Send(Header(200, 9000) + data);
         c.WaitForClose();
       },
       1267},
      {"silent", [&](auto& c) { c.WaitForClose(); }, 1265},
      {"no answer", [&](auto&) {}, 1265},
      {"cut within its headers", [&](auto& c) { c.Send("HTTP/1.1 200 OK\r\nServer: x\r\n"); },
       1265},
      {"nonsense", [&](auto& c) { c.Send("SSH-2.0\r\n\r\n"); }, 1265},
      {"redirection loop", [&](auto& c) { c.Send(Header(302, 0, "Location: /x\r\n")); }, 1265},
      {"redirected to a file",
       [&](auto& c) { c.Send(Header(302, 0, "Location: file://" + self + "\r\n")); }, 1265},
  };
  self = bench.folder.File("self");
  Spill(self, data);
  for (const auto& c : cases) {
    Spill(bench.target, "old");  // fails at first, as the folder is missing
    RawServer server([&](RawServer::Connection& connection) {
      connection.ReadRequest();
      c.answer(connection);
    });
    bench.view.texts.clear();
    const auto result = bench.Get(server.Url());
    EXPECT_EQ(result, c.error == 0 ? DownloadResult::kDone : DownloadResult::kFailed) << c.what;
    EXPECT_EQ(bench.error, c.error == 0 ? "" : bench.Error(c.error, server.Url())) << c.what;
    EXPECT_EQ(Slurp(bench.target), c.error == 0 ? data : "old") << c.what;
    if (c.error != 0) continue;
    EXPECT_EQ(bench.view.texts, (std::vector<std::string>{"0KB", "1KB", "2KB", "3KB", "4KB"}));
    EXPECT_FALSE(std::filesystem::exists(bench.target + ".tmp"));
  }
  struct stat about {};
  stat(bench.target.c_str(), &about);
  EXPECT_EQ(about.st_mode & 0777, 0600u);
  stat(bench.folder.File("temp").c_str(), &about);
  EXPECT_EQ(about.st_mode & 0777, 0700u);
  EXPECT_TRUE(bench.boxes.shown().empty());
}

TEST(Download, OpensFilesButNothingElse) {
  DownloadBench bench;
  Spill(bench.folder.File("source"), "data");
  EXPECT_EQ(bench.Get("FILE://" + bench.folder.File("source")), DownloadResult::kDone);
  EXPECT_EQ(Slurp(bench.target), "data");
  const std::string bad[] = {"",
                             "source",
                             bench.folder.File("source"),
                             "ftp://127.0.0.1/x",
                             "file://" + bench.folder.File("none"),
                             "http://127.0.0.1:" + std::to_string(UnusedPort()) + "/"};
  for (const std::string& url : bad) {
    EXPECT_EQ(bench.Get(url), DownloadResult::kFailed) << url;
    EXPECT_EQ(bench.error, bench.Error(1265, url));
  }
  EXPECT_EQ(Slurp(bench.target), "data");

  TlsServer server;
  EXPECT_EQ(bench.Get(server.Url()), DownloadResult::kFailed);
  EXPECT_EQ(bench.error, bench.Error(1265, server.Url()));
  EXPECT_EQ(server.connections(), 0);
  bench.options.authorities = bench.folder.File("ours.pem");
  Spill(bench.options.authorities, server.CertificateText());
  EXPECT_EQ(bench.Get(server.Url()), DownloadResult::kDone);
  EXPECT_EQ(Slurp(bench.target), "secret");
}

TEST(Download, TellsWhatTheDiskRefuses) {
  DownloadBench bench;
  const std::string source = bench.folder.File("source");
  const std::string url = "file://" + source;
  Spill(source, std::string(5000, 'd'));
  bench.limit = 4999;
  EXPECT_EQ(bench.Get(url), DownloadResult::kFailed);
  EXPECT_EQ(bench.error, bench.Error(1267, url));
  bench.limit = 5000;

  // A limit on the size of files stands for a full disk.
  std::signal(SIGXFSZ, SIG_IGN);
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  const auto limited = [&](rlim_t bytes) {
    const rlimit limit = {bytes, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
    const auto result = bench.Get(url);
    setrlimit(RLIMIT_FSIZE, &before);
    return result;
  };
  EXPECT_EQ(limited(2048), DownloadResult::kFailed);
  EXPECT_EQ(bench.error, bench.Error(1268, bench.target));
  EXPECT_EQ(limited(2050), DownloadResult::kFailed);
  EXPECT_EQ(bench.error, bench.Error(1269, url, bench.target));
  EXPECT_FALSE(std::filesystem::exists(bench.target));
  EXPECT_TRUE(bench.boxes.shown().empty());

  const std::string target = bench.target;
  bench.target = bench.folder.File("no/such/file");
  EXPECT_EQ(bench.Get(url), DownloadResult::kFailed);
  EXPECT_EQ(bench.error, bench.Error(1266, bench.target + ".tmp"));

  bench.target = target;
  std::filesystem::create_directory(target);
  EXPECT_EQ(bench.Get(url), DownloadResult::kFailed);
  EXPECT_EQ(bench.boxes.shown().back().text,
            "Could not delete file " + target + "\tReason: Is a directory\n");
  EXPECT_EQ(bench.boxes.shown().back().caption, "");
  std::filesystem::remove(target);

  bench.view.on_run = [&] { std::filesystem::remove(target + ".tmp"); };
  EXPECT_EQ(bench.Get(url), DownloadResult::kFailed);
  EXPECT_EQ(bench.boxes.shown().back().text, "Could not move file from " + target + ".tmp to " +
                                                 target + ".\tReason: No such file or directory\n");
  EXPECT_EQ(bench.boxes.shown().size(), 2u);
}

TEST(Download, CarriesAHugeFileInLittleMemoryAndStopsWhenCancelled) {
  constexpr std::size_t kSize = 200u << 20;
  DownloadBench bench;
  RawServer server([&](RawServer::Connection& connection) {
    connection.ReadRequest();
    connection.Send(Header(200, kSize));
    const std::string piece(1u << 20, 'x');
    for (std::size_t sent = 0; sent < kSize; sent += piece.size()) connection.Send(piece);
  });
  rusage before{}, after{};
  getrusage(RUSAGE_SELF, &before);
  EXPECT_EQ(bench.Get(server.Url()), DownloadResult::kDone);
  getrusage(RUSAGE_SELF, &after);
  EXPECT_EQ(std::filesystem::file_size(bench.target), kSize);
  EXPECT_LT(after.ru_maxrss - before.ru_maxrss,
            128 << 10);  // KB; the sanitizers keep what is freed
  EXPECT_EQ(bench.view.texts.back(), "204800KB");

  bench.view.texts.clear();
  bench.view.on_run = [&] { bench.cancel = bench.view.texts.size() > 3; };
  EXPECT_EQ(bench.Get(server.Url()), DownloadResult::kCancelled);
  EXPECT_EQ(std::filesystem::file_size(bench.target), kSize);
  EXPECT_EQ(std::filesystem::file_size(bench.target + ".tmp"), 3072u);
  EXPECT_TRUE(bench.boxes.shown().empty());

  // A silent server does not keep the operator waiting either.
  RawServer silent([](RawServer::Connection& connection) { connection.WaitForClose(); });
  bench.view.on_run = [&] { bench.cancel = true; };
  EXPECT_EQ(bench.Get(silent.Url()), DownloadResult::kCancelled);
}

}  // namespace
}  // namespace orvalo::test
