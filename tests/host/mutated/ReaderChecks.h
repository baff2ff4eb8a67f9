#ifndef TRUNNION_TESTS_HOST_MUTATED_READER_CHECKS_H
#define TRUNNION_TESTS_HOST_MUTATED_READER_CHECKS_H

#include <string>

// What has to hold of any text that a reader is given: a refusal names a place in it; what is
// accepted is whole, and the same as a plain reading of the text.
namespace test
{

enum class Reading {
    Refused,
    Accepted, //!< a plain reading did not follow the text
    Compared  //!< with a plain reading
};

Reading CheckMachineText(const std::string& text);
Reading CheckUrdfText(const std::string& text); //!< between the links "tool" and "part"
Reading CheckAptText(const std::string& text);
Reading CheckCsvText(const std::string& text);
Reading CheckNcText(const std::string& text);
Reading CheckJointTableText(const std::string& text); //!< of the mill of MillText.h
Reading CheckDialectText(const std::string& text);

enum class Verified { Refused, Wrong, Held };

/// Reads a joint table of that mill and verifies it against a path of four points.
Verified CheckVerification(const std::string& text);

} // namespace test

#endif
