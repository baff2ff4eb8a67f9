#ifndef TRUNNION_HOST_MACHINE_URDF_NUMBERS_H
#define TRUNNION_HOST_MACHINE_URDF_NUMBERS_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "geometry/Vec3.h"
#include "text/XmlText.h"

namespace host
{

/// Reads the numbers in attributes of a URDF's elements. Nothing where there is no such attribute;
/// InputError, with the file and the element's place, for one that is not what it should be.
/// `what` says what the attribute belongs to.
class UrdfNumbers
{
  public:
    explicit UrdfNumbers(std::string inFile) : file(std::move(inFile)) {}

    std::optional<double> Number(const XmlElement& element, const std::string& attribute,
                                 const std::string& what) const;
    std::optional<Vec3> Triple(const XmlElement& element, const std::string& attribute,
                               const std::string& what) const;
    /// As many numbers as the example has, such as "0 0 0.1".
    std::optional<std::vector<double>> Numbers(const XmlElement& element,
                                               const std::string& attribute,
                                               const std::string& what,
                                               std::string_view example) const;

    [[noreturn]] void Refuse(const XmlElement& element, const std::string& sentence) const;

  private:
    double Value(const XmlElement& element, std::string_view text, const std::string& attribute,
                 const std::string& what) const;

    std::string file;
};

} // namespace host

#endif
