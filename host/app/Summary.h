#ifndef TRUNNION_HOST_APP_SUMMARY_H
#define TRUNNION_HOST_APP_SUMMARY_H

#include <chrono>
#include <cstddef>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "machine/AxisText.h"
#include "solve/WarmStart.h"
#include "toolpath/Toolpath.h"

namespace host
{

/// What a run over a path comes to.
class Summary
{
  public:
    Summary(std::vector<const Axis*> ofAxes, const ShownUnits& inUnits);

    void Add(const ToolPoint& point, const std::optional<Reached>& reached);
    bool HasFailures() const { return failed > 0; }
    void Print(std::ostream& out, const std::string& pathFile,
               std::chrono::duration<double> time) const;

  private:
    struct Worst
    {
        double value{-1.0};
        int line{0};
    };
    struct Span
    {
        double low;
        double high;
    };

    static void Note(Worst& worst, double value, int line);
    void PrintWorst(std::ostream& out, const std::string& pathFile) const;
    void PrintAxes(std::ostream& out) const;

    std::vector<const Axis*> axes;
    ShownUnits units;
    std::size_t converged{0};
    std::size_t failed{0};
    Worst position;
    Worst direction;
    std::vector<Span> spans;
};

} // namespace host

#endif
