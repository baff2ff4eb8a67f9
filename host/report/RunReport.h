#ifndef TRUNNION_HOST_REPORT_RUN_REPORT_H
#define TRUNNION_HOST_REPORT_RUN_REPORT_H

#include <cstddef>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "motion/Event.h"

// What a run over a path comes to, for whoever prints it or writes it down. Values are in the units
// that are shown.
namespace host
{

/// A file that was read.
struct ReportedFile
{
    std::string path;   //!< as the user wrote it
    std::string sha256; //!< of its content: 64 digits, 0 to f
};

/// A file that was written.
struct ReportedOutput
{
    std::string kind; //!< "joints", "gcode", "report"
    std::string path;
};

struct ReportedStream
{
    int id{0};
    std::string tool;
    std::string part;
};

/// What is done with one tool.
struct ReportedOperation
{
    std::string name; //!< empty where the toolpath gives none
    int line{0};      //!< of the toolpath file
    std::size_t firstPoint{0};
    int stream{0}; //!< its id
    std::optional<int> toolNumber;
    double toolLength{0.0}; //!< [length]
};

/// A setting that the result depends on, given or by default.
struct ReportedOption
{
    std::string name; //!< with its unit, where it has one: "linear_tolerance_mm"
    std::variant<bool, int, double, std::string> value;
};

struct ReportedCounts
{
    std::size_t points{0};
    std::size_t converged{0};
    std::size_t failed{0};
    std::size_t rows{0};     //!< that have joint values
    std::size_t inserted{0}; //!< of them, between points
};

struct ReportedError
{
    double value{0.0};
    int line{0}; //!< of the toolpath file
};

struct ReportedRange
{
    double low{0.0};
    double high{0.0};
};

struct ReportedAxis
{
    std::string name;
    bool isRotary{false};
    std::string word; //!< in G-code
    int wordSign{1};
    std::string unit;
    std::optional<ReportedRange> limits;  //!< nothing: unlimited
    std::optional<ReportedRange> reached; //!< nothing without any row
};

/// How the work was shared among ranks.
struct ReportedSharing
{
    std::size_t ranks{0};
    std::size_t tasks{0};
    std::size_t leaderTasks{0};    //!< of them done by rank 0
    double leaderTaskSeconds{0.0}; //!< that took it
    double leaderWaitSeconds{0.0}; //!< it had nothing to do
    std::size_t sentBytes{0};
    std::size_t receivedBytes{0};
};

struct RunReport
{
    std::string version;              //!< of the program
    std::vector<std::string> command; //!< its arguments, itself the first
    ReportedFile machine;
    std::string machineName;
    ReportedFile toolpath;
    std::vector<ReportedOutput> outputs;
    std::string lengthUnit;
    std::string angleUnit;
    std::vector<ReportedStream> streams;
    std::vector<ReportedOperation> operations;
    std::vector<ReportedOption> options;
    ReportedCounts counts;
    std::optional<ReportedError> position;      //!< the worst [length]; nothing without any row
    std::optional<ReportedError> direction_deg; //!< the worst
    std::vector<ReportedAxis> axes;
    std::vector<Event> events; //!< in the order of the path
    double seconds{0.0};
    std::optional<ReportedSharing> sharing; //!< nothing where there was one rank
};

} // namespace host

#endif
