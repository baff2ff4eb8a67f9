#ifndef TRUNNION_TESTS_HOST_GCODE_READER_H
#define TRUNNION_TESTS_HOST_GCODE_READER_H

#include <map>
#include <string>
#include <vector>

namespace test
{

/// A block that moves, as a control of the RS274 family takes it.
struct GcodeBlock
{
    bool isRapid{false};
    bool isTcpOn{false};
    std::map<std::string, double> place; //!< every coordinate given so far
    int feedMode{0};                     //!< 93, 94, 95; 0 before any
    double feed{0.0};                    //!< what F last said
    /// What a G1 block takes: minutes, under G95 revolutions.
    double duration{0.0};
};

/// Reads a program word by word, knowing nothing of how it was written. Linear words are those of
/// X, Y, Z, U, V, W. Throws std::runtime_error for what a control would stop at.
std::vector<GcodeBlock> ReadGcode(const std::string& program);

} // namespace test

#endif
