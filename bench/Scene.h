#ifndef TRUNNION_BENCH_SCENE_H
#define TRUNNION_BENCH_SCENE_H

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Subject.h"

namespace bench
{

// Contenders.
inline constexpr const char* kLibrary = "library";
inline constexpr const char* kPlain = "plain"; //!< the plain formulation of tests/plain
inline constexpr const char* kJama = "jama";   //!< the decompositions in the library's calls
inline constexpr const char* kKdlNewton = "kdl-nr-jl";
inline constexpr const char* kKdlMarquardt = "kdl-lma";

// Operations.
inline constexpr const char* kForward = "forward";
inline constexpr const char* kJacobian = "jacobian";
inline constexpr const char* kPass = "pass";
inline constexpr const char* kStreamCold = "stream-cold";
inline constexpr const char* kStreamWarm = "stream-warm";
inline constexpr const char* kObjectCold = "object-cold";
inline constexpr const char* kObjectWarm = "object-warm";
inline constexpr const char* kHybrid = "hybrid";

struct Contender
{
    std::string name;
    std::function<void()> run;      //!< every call of the scene once
    std::optional<double> solved{}; //!< share of the targets that it meets
};

/// One operation on one machine, and those who do it.
struct Scene
{
    std::string operation;
    const Subject* subject{nullptr};
    int calls{0}; //!< in a run: solves, passes, poses
    std::vector<Contender> contenders;

    const Contender* Find(const std::string& name) const;
};

/// How much is measured.
struct Effort
{
    int poses; //!< of forward kinematics
    int coldTargets;
    int warmTargets;
    int hybridTargets;
    double seconds; //!< on each scene's rounds, at least
    int leastRounds;
};

inline constexpr Effort kFullEffort{64, 40, 96, 6, 0.8, 11};
inline constexpr Effort kQuickEffort{16, 6, 24, 1, 0.02, 3};

/// All operations on a machine. Throws when library and plain formulation do not give the same
/// bits, or KDL's chain does not stand where the machine does.
std::vector<Scene> ScenesOf(const Subject& subject, const Effort& effort);

/// Passes alone.
Scene PassScene(const Subject& subject, const Effort& effort);

} // namespace bench

#endif
