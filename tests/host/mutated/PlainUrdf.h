#ifndef TRUNNION_TESTS_HOST_MUTATED_PLAIN_URDF_H
#define TRUNNION_TESTS_HOST_MUTATED_PLAIN_URDF_H

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace test
{

using PlainAttributes = std::map<std::string, std::string>;

struct PlainJoint
{
    PlainAttributes attributes;
    std::map<std::string, PlainAttributes> elements; //!< those in it, by their names
};

/// The joints right within the root element. Nothing where the text has comments, entities or the
/// like.
std::optional<std::vector<PlainJoint>> PlainUrdf(const std::string& text);

} // namespace test

#endif
