#ifndef TRUNNION_HOST_TEXT_COLUMNS_H
#define TRUNNION_HOST_TEXT_COLUMNS_H

#include <ostream>
#include <string>
#include <vector>

namespace host
{

/// Rows of words, printed so that they stand below each other, each column as wide as its longest
/// word. Rows may differ in length.
class Columns
{
  public:
    enum class Side { Left, Right };

    /// On which side the words of each column line up; on the left where there are more.
    explicit Columns(std::vector<Side> ofSides = {});

    void Add(std::vector<std::string> row);
    /// Every line begins with `indent`; none ends in blanks.
    void Print(std::ostream& out, const std::string& indent) const;

  private:
    std::vector<Side> sides;
    std::vector<std::vector<std::string>> rows;
};

} // namespace host

#endif
