// The drill from a command line: see drill.h, and scripts/drill.sh.

#include <CLI/CLI.hpp>
#include <chrono>
#include <cstdio>
#include <exception>

#include "drill/drill.h"

namespace orvalo::test {
namespace {

void Print(const DrillPlan& plan, const DrillFaults& faults, const Verdict& verdict,
           double minutes) {
  std::printf("seed %u, %.1f minutes\n\nFaults made\n", plan.seed, minutes);
  const auto row = [](const char* what, int count) { std::printf("  %-44s %8d\n", what, count); };
  row("kill -9 of the client", faults.client_kills);
  row("kill -9 of the service", faults.service_kills);
  row("kill -9 of both", faults.both_kills);
  row("power cuts of the client", faults.cuts);
  row("client told to end (SIGTERM)", faults.ends);
  row("service stopped for a second", faults.stops);
  row("service down for up to 2 seconds", faults.outages);
  row("error pages and cut connections", faults.bad_answers);
  row("starts of a service that loses 5 % of replies", faults.lossy_services);
  row("contacts edited between death and start", faults.edits);
  row("starts with the clock up to 6 hours off", faults.clock_jumps);
  row("starts that found messages half sent", faults.half_sent);
  std::printf("\nAfterwards\n");
  row("recipients", verdict.recipients);
  row("of them accepted before the last fault", faults.accepted_meanwhile);
  row("lost", verdict.lost);
  row("doubled", verdict.doubled);
  row("in doubt", verdict.in_doubt);
  row("wrongly \"Failed\"", verdict.wrongly_failed);
  row("accepted, but not so in the outbox", verdict.misreported);
  for (const std::string& example : verdict.examples) std::printf("  %s\n", example.c_str());
}

int Main(int argc, char** argv) {
  DrillPlan plan;
  plan.power_cut = POWER_CUT;
  CLI::App app("Kills client and service while they send, and counts what was lost or doubled");
  app.add_option("--seed", plan.seed, "The same seed makes the same choices")
      ->capture_default_str();
  app.add_option("--kills", plan.kills, "Kills of the client, the service or both")
      ->check(CLI::Range(0, 1'000'000))
      ->capture_default_str();
  app.add_option("--cuts", plan.cuts, "Power cuts of the client")
      ->check(CLI::Range(0, 1'000'000))
      ->capture_default_str();
  app.add_option("--recipients", plan.recipients, "Recipients in all")
      ->check(CLI::Range(1, 100'000'000))
      ->capture_default_str();
  CLI11_PARSE(app, argc, argv);
  const auto start = std::chrono::steady_clock::now();
  Drill drill(plan);
  const Verdict verdict = drill.Run();
  const std::chrono::duration<double, std::ratio<60>> minutes =
      std::chrono::steady_clock::now() - start;
  Print(plan, drill.faults(), verdict, minutes.count());
  return verdict.IsClean() ? 0 : 1;
}

}  // namespace
}  // namespace orvalo::test

int main(int argc, char** argv) {
  try {
    return orvalo::test::Main(argc, argv);
  } catch (const std::exception& problem) {
    std::fprintf(stderr, "drill: %s\n", problem.what());
    return 2;
  }
}
