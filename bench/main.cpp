// How fast the library is, beside the plain formulation, JAMA's decompositions alone, and KDL.
//
//   trunnion_bench [--quick] [--benchmark_...]
//   trunnion_bench --ratios [--ratios_out=FILE] [--quick]
//
// Without --ratios every contender is a benchmark of its own, named OPERATION/MACHINE/CONTENDER;
// its items are calls: poses, Jacobians, passes, solves. With it the contenders of each operation
// take turns, and tables of the ratios between them are printed, as JSON also into a file. --quick
// is for seeing that it runs: its figures mean little.
//
// Operations: forward kinematics; the Jacobian of the free joints; a pass; the solves of a stream
// and of a solver object, cold, from home to random reachable poses, and warm, each from the answer
// of the one before (the time includes going there); the hybrid solve, cold. Limits are respected.
// A target counts as solved when forward kinematics of the answer is within 1e-4 mm and the tool's
// axis within 1e-2 degrees, and on the arm the x axis too.

#include <algorithm>
#include <exception>
#include <iostream>
#include <list>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>

#include <benchmark/benchmark.h>

#include "BenchPaths.h"
#include "Measurements.h"
#include "Report.h"
#include "text/OutputFile.h"

namespace
{

constexpr double kQuickSeconds = 0.002; // of a benchmark

struct Options
{
    bool isQuick{false};
    bool showsRatios{false};
    std::optional<std::string> ratiosFile;
};

/// Of what Google Benchmark leaves over.
Options OptionsFrom(int argc, char** argv)
{
    constexpr std::string_view kFile = "--ratios_out=";
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument == "--quick") {
            options.isQuick = true;
        } else if (argument == "--ratios") {
            options.showsRatios = true;
        } else if (argument.substr(0, kFile.size()) == kFile) {
            options.ratiosFile = argument.substr(kFile.size());
        } else {
            throw std::runtime_error(
                "trunnion_bench: unknown argument " + std::string(argument) +
                "; give --quick, --ratios, --ratios_out=FILE or --benchmark_...");
        }
    }
    if (options.ratiosFile && !options.showsRatios) {
        throw std::runtime_error("trunnion_bench: --ratios_out goes with --ratios");
    }
    return options;
}

std::vector<bench::Subject> AllSubjects()
{
    std::vector<bench::Subject> subjects = bench::FiveAxisSubjects(bench::kSamples);
    subjects.push_back(bench::ThreeAxisSubject());
    subjects.push_back(bench::ArmSubject());
    subjects.push_back(bench::NineJointSubject(bench::kNineJoints));
    return subjects;
}

void ShowRatios(const Options& options, const bench::Effort& effort)
{
    const std::vector<bench::Subject> subjects = AllSubjects();
    const bench::Measurements measurements = bench::Measure(subjects, effort);
    bench::PrintReport(measurements, std::cout);
    if (options.ratiosFile) {
        std::ostringstream json;
        bench::WriteJson(measurements, json);
        host::OutputFile file(*options.ratiosFile);
        file.Write(json.str());
        file.Finish();
    }
}

void Register(const bench::Scene& scene, const bench::Contender& contender, bool isQuick)
{
    const std::string name = scene.operation + "/" + scene.subject->name + "/" + contender.name;
    auto* registered = benchmark::RegisterBenchmark(
        name.c_str(), [&contender, calls = scene.calls](benchmark::State& state) {
            for ([[maybe_unused]] auto _ : state) {
                contender.run();
            }
            state.SetItemsProcessed(state.iterations() * calls);
            if (contender.solved) {
                state.counters["solved"] = *contender.solved;
            }
        });
    if (isQuick) {
        registered->MinTime(kQuickSeconds);
    }
}

void RunBenchmarks(const Options& options, const bench::Effort& effort)
{
    const std::vector<bench::Subject> subjects = AllSubjects();
    std::list<bench::Scene> scenes;
    for (const bench::Subject& subject : subjects) {
        for (bench::Scene& scene : bench::ScenesOf(subject, effort)) {
            scenes.push_back(std::move(scene));
            for (const bench::Contender& contender : scenes.back().contenders) {
                Register(scenes.back(), contender, options.isQuick);
            }
        }
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
}

} // namespace

int main(int argc, char** argv)
{
    try {
        benchmark::Initialize(&argc, argv);
        const Options options = OptionsFrom(argc, argv);
        const bench::Effort& effort = options.isQuick ? bench::kQuickEffort : bench::kFullEffort;
        if (options.showsRatios) {
            ShowRatios(options, effort);
        } else {
            RunBenchmarks(options, effort);
        }
        return 0;
    } catch (const std::exception& error) {
        std::cerr << error.what() << "\n";
        return 1;
    }
}
