#ifndef TRUNNION_HOST_POST_DIALECT_H
#define TRUNNION_HOST_POST_DIALECT_H

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// How a control wants its G-code. dialects/ has the bundled ones, as files to begin with.
namespace host
{

/// Digits after the point.
struct Decimals
{
    int mm{0};
    int inch{0};
    int degree{0};
    int feed{0};
    bool keepsZeros{false}; //!< trailing ones; the point stays either way
};

enum class FeedMode { InverseTime, PerMinute };
enum class CommentStyle { Parentheses, Semicolon };

struct FeedRules
{
    FeedMode mode{FeedMode::InverseTime};
    std::string word;                         //!< that sets the mode: "G93"
    std::optional<std::string> perRevolution; //!< the word, where the control has such feeds
    double largest{0.0};                      //!< F is never more
    double rotaryRate_deg{0.0};               //!< [deg/min] of any one axis
};

struct LineNumbers
{
    int first{0};
    int step{0};
    int last{0}; //!< none is larger; they begin again
};

/// Lines that switch tool centre point control.
struct TcpLines
{
    std::vector<std::string> on;
    std::vector<std::string> off;
};

struct Dialect
{
    std::string file; //!< for messages
    std::string name;
    Decimals decimals;
    std::string mm; //!< the word for it, as those that follow
    std::string inch;
    std::string rapid;
    std::string linear;
    FeedRules feed;
    bool isModal{false};        //!< words that say what already holds are left out
    bool takesLongWords{false}; //!< "J1=12.5" for an axis whose word is longer than a letter
    CommentStyle comment{CommentStyle::Parentheses};
    std::optional<LineNumbers> lineNumbers;
    std::vector<std::string> header; //!< here and below with placeholders
    std::vector<std::string> footer;
    std::vector<std::string> toolChange;
    std::optional<TcpLines> tcp; //!< nothing: axis positions
};

/// Throws InputError, with its place, for what is not a dialect.
Dialect ReadDialect(std::string_view text, const std::string& file);
/// A bundled dialect by its name, otherwise a file.
Dialect LoadDialect(const std::string& nameOrFile);
/// In the order of their names.
std::vector<std::string> BundledDialectNames();

/// A line with `value` of each placeholder's name in its place.
std::string Filled(std::string_view line,
                   const std::function<std::string(std::string_view)>& value);

} // namespace host

#endif
