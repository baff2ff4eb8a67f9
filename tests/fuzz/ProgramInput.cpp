#include "fuzz/ProgramInput.h"

#include <algorithm>
#include <array>
#include <vector>

#include "MillTexts.h"
#include "mutated/Mutation.h"
#include "text/Numbers.h"

namespace test
{

namespace
{

using std::to_string;

/// Rounded to thousandths, as files have them, or extreme.
std::string NumberText(double value, Random& random)
{
    if (random.OneIn(64)) {
        return host::ShortestText(random.OneOf({0.0, -0.0, 1e-9, 1e9, -1e12, 1e-300, 0.1}));
    }
    return host::ShortestText(static_cast<double>(static_cast<long>(value * 1000.0)) / 1000.0);
}

std::string TripleText(double reach, Random& random)
{
    std::string text = "[";
    for (int i = 0; i < 3; ++i) {
        text += (i == 0 ? "" : ", ") + NumberText(random.Between(-reach, reach), random);
    }
    return text + "]";
}

std::string DirectionText(Random& random)
{
    static const std::array<const char*, 7> kUsual{"[1, 0, 0]",    "[0, 1, 0]",  "[0, 0, 1]",
                                                   "[0, 0, -1]",   "[0, -1, 0]", "[1, 0, 1]",
                                                   "[0, 0.7, 0.7]"};
    return random.OneIn(6) ? TripleText(1.0, random)
                           : kUsual[static_cast<std::size_t>(random.Below(7))];
}

std::string LimitsText(double reach, Random& random)
{
    if (random.OneIn(4)) {
        return kUnlimited;
    }
    const double low = random.OneIn(5) ? 0.0 : random.Between(-reach, 0);
    const double high = random.OneIn(5) ? 0.0 : random.Between(0, reach);
    return "limits = [" + NumberText(low, random) + ", " + NumberText(high, random) + "]";
}

/// One of the names so far, or base.
std::string AnyParent(const std::vector<std::string>& names, bool mostlyLast, Random& random)
{
    if (names.empty() || random.OneIn(4)) {
        return "base";
    }
    const auto last = names.size() - 1;
    return names[mostlyLast && !random.OneIn(4)
                     ? last
                     : static_cast<std::size_t>(random.Below(static_cast<int>(names.size())))];
}

std::string AnyAxes(std::vector<std::string>& names, Random& random)
{
    static const std::array<const char*, 7> kNames{"X", "Y", "Z", "A", "B", "C", "W"};
    std::string text;
    const int count = 1 + random.Below(7);
    for (int i = 0; i < count; ++i) {
        const bool isRotary = random.OneIn(2);
        const std::string name = kNames[static_cast<std::size_t>(i)];
        const std::string parent = AnyParent(names, true, random);
        const std::string direction = DirectionText(random);
        std::string rest = isRotary ? "point = " + TripleText(200, random) + "\n" : "";
        rest += LimitsText(isRotary ? 400 : 900, random);
        text += AxisText(name, parent, isRotary, direction, rest);
        names.push_back(name);
    }
    return text;
}

std::string AnyMill(Random& random)
{
    const std::string first = LimitsText(200, random);
    const std::string second = LimitsText(500, random);
    switch (random.Below(4)) {
    case 0:
        return TableTableText(first, second);
    case 1:
        return HeadTableText(first, second);
    case 2:
        return HeadHeadText(second, first);
    default:
        return NutatingHeadText(second, first);
    }
}

std::string GotoText(bool isTable, Random& random)
{
    std::string text = isTable ? "" : "GOTO/";
    const double reach = random.OneIn(6) ? 600.0 : 40.0;
    for (int i = 0; i < 3; ++i) {
        text += NumberText(random.Between(-reach, reach), random) + ",";
    }
    const double lean = random.OneIn(4) ? 1.0 : 0.3;
    const std::string i = NumberText(random.OneIn(4) ? 0.0 : random.Between(-lean, lean), random);
    const std::string j = NumberText(random.OneIn(4) ? 0.0 : random.Between(-lean, lean), random);
    const std::string k = NumberText(random.OneIn(8) ? random.Between(-1, 1) : 1.0, random);
    return text + i + "," + j + "," + k;
}

PathInput AnyTable(Random& random)
{
    std::string text = "x,y,z,i,j,k,f,rapid,op\n";
    for (int left = 1 + random.Below(6); left > 0; --left) {
        text += GotoText(true, random) + (random.OneIn(4) ? ",,1," : ",250,0,");
        text += random.OneIn(3) ? "Next\n" : "\n";
    }
    return {"path.csv", text};
}

PathInput AnyCutterLocations(Random& random)
{
    std::string text = random.OneIn(2) ? "UNITS/MM\n" : (random.OneIn(2) ? "UNITS/INCH\n" : "");
    text += "MULTAX/ON\n";
    for (int left = 1 + random.Below(6); left > 0; --left) {
        if (random.OneIn(4)) {
            text += "RAPID\n";
        }
        if (random.OneIn(6)) {
            text += "FEDRAT/" + NumberText(random.Between(1, 3000), random) + ",MMPM\n";
        }
        if (random.OneIn(8)) {
            text += "LOADTL/" + to_string(random.Below(20)) + "\nTLDATA/MILL,10,5,60\n";
        }
        text += GotoText(false, random) + "\n";
    }
    return {"path.cl", text};
}

std::string OneOfTexts(const std::vector<std::string>& texts, Random& random)
{
    return texts[static_cast<std::size_t>(random.Below(static_cast<int>(texts.size())))];
}

} // namespace

std::string AnyMachineText(Random& random)
{
    std::string text;
    if (random.OneIn(2)) {
        text = AnyMill(random);
    } else {
        std::vector<std::string> names;
        const std::string axes = AnyAxes(names, random);
        const std::string toolParent = AnyParent(names, true, random);
        const std::string partParent = AnyParent(names, false, random);
        const std::string tool = MountText("tool", toolParent, TripleText(100, random));
        text = WholeMill(axes, tool + MountText("part", partParent, TripleText(100, random)));
    }
    return random.OneIn(8) ? Mutated({text}, random) : text;
}

PathInput AnyPath(Random& random)
{
    PathInput path = random.OneIn(3) ? AnyTable(random) : AnyCutterLocations(random);
    if (random.OneIn(8)) {
        path.text = Mutated({path.text}, random);
    }
    // Mutations double lines: as many points as take a moment, and no more.
    constexpr std::size_t kMostBytes = 1500;
    path.text.resize(std::min(path.text.size(), kMostBytes));
    return path;
}

host::SolveOptions AnyOptions(Random& random)
{
    host::SolveOptions options;
    options.isQuiet = random.OneIn(4);
    options.inRadians = random.OneIn(4);
    options.pointsOnly = random.OneIn(3);
    if (random.OneIn(2)) {
        options.linearTolerance = random.OneOf({0.01, 0.1, 1.0});
    }
    options.angleTolerance_deg = random.OneOf({0.05, 0.5, 0.001});
    options.dialect = OneOfTexts({"inverse-time", "per-minute", "tcp"}, random);
    options.start = OneOfTexts({"home", "home", "free"}, random);
    options.rewind = OneOfTexts({"rapids", "retract"}, random);
    options.branchChange = OneOfTexts({"rapids", "retract"}, random);
    options.toolRoll = OneOfTexts({"fixed", "fixed", "feed", "search", "open"}, random);
    options.prefer = OneOfTexts({"", "", "A-", "C+", "B-"}, random);
    if (random.OneIn(4)) {
        options.toolLength = random.OneOf({0.0, 50.0, 120.5, 1e6});
    }
    if (random.OneIn(6)) {
        options.locks.push_back(
            OneOfTexts({"A=0", "B=30", "C=-20", "X=10", "Q=1", "A=nan"}, random));
    }
    options.poleCone_deg = random.OneOf({2.0, 0.0, 10.0});
    options.maxIterations = random.OneIn(8) ? 1 + random.Below(100) : options.maxIterations;
    return options;
}

} // namespace test
