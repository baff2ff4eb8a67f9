#include "Measurements.h"

namespace bench
{

namespace
{

Growth GrowthAt(int joints, const Effort& effort)
{
    const Subject subject = SerialSubject(joints);
    const Scene scene = PassScene(subject, effort);
    const PairedTimes times(scene, effort);
    const int nodes = subject.NodeCount();
    return {joints, nodes, *times.Median(kLibrary), *times.Median(kJama),
            *times.MedianDifference(kLibrary, kJama) / (joints * nodes)};
}

} // namespace

Measurements Measure(const std::vector<Subject>& subjects, const Effort& effort)
{
    Measurements measurements;
    for (const Subject& subject : subjects) {
        for (Scene& scene : ScenesOf(subject, effort)) {
            PairedTimes times(scene, effort);
            measurements.scenes.push_back({std::move(scene), std::move(times)});
        }
        if (subject.kind == Kind::FiveAxes || subject.kind == Kind::Arm) {
            measurements.allocations.push_back(StreamAllocations(subject));
            measurements.allocations.push_back(ObjectAllocations(subject));
        }
    }
    for (const int joints : {3, 5, 6, 9, 12, 16}) {
        measurements.growth.push_back(GrowthAt(joints, effort));
    }
    return measurements;
}

} // namespace bench
