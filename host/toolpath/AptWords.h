#ifndef TRUNNION_HOST_TOOLPATH_APT_WORDS_H
#define TRUNNION_HOST_TOOLPATH_APT_WORDS_H

#include <optional>
#include <string>

#include "geometry/Units.h"
#include "toolpath/AptStatement.h"
#include "toolpath/Toolpath.h"

// What the words of the APT family mean. A word that is not listed here may move the tool.
namespace host
{

/// True for a statement whose text is for people, for instance PPRINT; it may follow after a mere
/// blank.
bool IsAptText(const AptStatement& statement);
/// True for statements that neither move the tool nor change what coordinates mean.
bool IsAptInert(const AptStatement& statement);
/// Why a statement that is neither understood nor inert is refused.
std::string WhyAptRefused(const AptStatement& statement);

struct AptFeedUnit
{
    std::optional<LengthUnit> length; //!< nothing: the file's
    FeedPer per{FeedPer::Minute};
};

/// Null for a word that is no unit of a feed.
const AptFeedUnit* FindAptFeedUnit(const std::string& word);

} // namespace host

#endif
