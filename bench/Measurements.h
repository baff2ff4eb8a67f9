#ifndef TRUNNION_BENCH_MEASUREMENTS_H
#define TRUNNION_BENCH_MEASUREMENTS_H

#include <vector>

#include "Allocations.h"
#include "PairedTimes.h"
#include "Scene.h"

namespace bench
{

struct SceneTimes
{
    Scene scene;
    PairedTimes times;
};

/// What a pass costs on a chain of some joints.
struct Growth
{
    int joints;
    int nodes;
    double pass;            //!< [s]
    double decomposition;   //!< in it [s]
    double perJointAndNode; //!< of the rest [s]
};

/// Everything that one run finds out.
struct Measurements
{
    std::vector<SceneTimes> scenes;
    std::vector<Growth> growth;
    std::vector<Allocations> allocations;
};

Measurements Measure(const std::vector<Subject>& subjects, const Effort& effort);

} // namespace bench

#endif
