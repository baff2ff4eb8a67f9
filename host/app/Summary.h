#ifndef TRUNNION_HOST_APP_SUMMARY_H
#define TRUNNION_HOST_APP_SUMMARY_H

#include <chrono>
#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

#include "machine/AxisText.h"
#include "motion/Event.h"
#include "motion/MotionRow.h"

namespace host
{

/// What a run over a path comes to.
class Summary
{
  public:
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

    Summary(std::vector<const Axis*> ofAxes, const ShownUnits& inUnits);

    /// `line` is that of the row's point.
    void Add(const MotionRow& row, int line);
    void Add(const Event& event) { events.push_back(event); }

    bool HasFailures() const { return failed > 0; }
    std::size_t Converged() const { return converged; }
    std::size_t Failed() const { return failed; }
    std::size_t Rows() const { return rows; }
    std::size_t Inserted() const { return inserted; }
    const Worst& WorstPosition() const { return position; }   //!< [length]
    const Worst& WorstDirection() const { return direction; } //!< [deg]
    const std::vector<Span>& Spans() const { return spans; }  //!< of the axes, [length] or [rad]
    const std::vector<Event>& Events() const { return events; }

    void Print(std::ostream& out, const std::string& pathFile,
               std::chrono::duration<double> time) const;

  private:
    static void Note(Worst& worst, double value, int line);
    void PrintWorst(std::ostream& out, const std::string& pathFile) const;
    void PrintAxes(std::ostream& out) const;
    void PrintEvents(std::ostream& out, const std::string& pathFile) const;

    std::vector<const Axis*> axes;
    ShownUnits units;
    std::size_t converged{0};
    std::size_t failed{0};
    std::size_t rows{0};
    std::size_t inserted{0};
    Worst position;
    Worst direction;
    std::vector<Span> spans;
    std::vector<Event> events;
};

} // namespace host

#endif
