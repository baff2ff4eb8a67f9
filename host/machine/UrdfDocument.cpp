#include "machine/UrdfDocument.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <set>
#include <utility>

#include "geometry/Vec3.h"
#include "machine/AxisName.h"
#include "machine/UrdfNumbers.h"
#include "machine/UrdfVisuals.h"
#include "text/Quoted.h"
#include "text/XmlText.h"

namespace host
{

namespace
{

constexpr std::size_t kMaxLinks = 1024;
constexpr std::size_t kMaxAxes = 64;

/// Goes through the elements in the file's order, then over the tree that they make.
class Checker
{
  public:
    explicit Checker(const std::string& file) : numbers(file) { document.file = file; }

    UrdfDocument Check(const XmlElement& root)
    {
        if (root.name != "robot") {
            Refuse(root,
                   "this is <" + Printable(root.name) +
                       ">, and a URDF begins with <robot name=\"...\">; is it the right file?");
        }
        RefuseMacros(root);
        document.robot = {NameOf(root), root.at};
        plain.name = root.name;
        plain.attributes = {{"name", document.robot.value}};
        TakeAll(root, "link", [this](const XmlElement& link) { TakeLink(link); });
        TakeAll(root, "joint", [this](const XmlElement& joint) { TakeJoint(joint); });
        CheckTree();
        document.kinematics = XmlTextOf(plain);
        document.visuals = UrdfVisualsOf(root, numbers);
        return std::move(document);
    }

  private:
    struct Hung
    {
        std::string parent;
        std::string joint;
    };

    [[noreturn]] void Refuse(TextPosition at, const std::string& sentence) const
    {
        throw InputError(document.file, at, sentence);
    }
    [[noreturn]] void Refuse(const XmlElement& element, const std::string& sentence) const
    {
        Refuse(element.at, sentence);
    }

    /// A name out of the file, without quotes of its own.
    static std::string Printable(const std::string& name)
    {
        const std::string quoted = Quoted(name);
        return quoted.substr(1, quoted.size() - 2);
    }

    void RefuseMacros(const XmlElement& element) const
    {
        constexpr std::string_view kPrefix = "xacro:";
        if (element.name.compare(0, kPrefix.size(), kPrefix) == 0) {
            Refuse(element, "<" + Printable(element.name) +
                                "> is a macro; expand the file with xacro first");
        }
        for (const XmlElement& child : element.children) {
            RefuseMacros(child);
        }
    }

    template <class Take>
    void TakeAll(const XmlElement& root, std::string_view name, const Take& take)
    {
        for (const XmlElement& child : root.children) {
            if (child.name == name) {
                take(child);
            }
        }
    }

    std::string NameOf(const XmlElement& element) const
    {
        const auto name = element.Attribute("name");
        if (!name || name->empty()) {
            Refuse(element, "this " + element.name + " has no name; add name=\"...\"");
        }
        return *name;
    }

    // Links and joints ---------------------------------------------------------------------------

    void TakeLink(const XmlElement& link)
    {
        const std::string name = NameOf(link);
        if (!links.insert(name).second) {
            Refuse(link, "there is already a link " + Quoted(name) + "; choose another name");
        }
        if (links.size() > kMaxLinks) {
            Refuse(link, "there are more than " + std::to_string(kMaxLinks) +
                             " links; leave out what neither moves nor holds anything");
        }
        document.links.push_back({name, link.at});
        plain.children.push_back({"link", {{"name", name}}, {}, link.at});
    }

    void TakeJoint(const XmlElement& joint)
    {
        const std::string name = NameOf(joint);
        const std::string what = "joint " + Quoted(name);
        if (!joints.insert(name).second) {
            Refuse(joint, "there is already a " + what + "; choose another name");
        }
        const std::string type = TypeOf(joint, what);
        XmlElement kept{"joint", {{"name", name}, {"type", type}}, {}, joint.at};
        const std::string parent = LinkOf(joint, "parent", what);
        const std::string child = LinkOf(joint, "child", what);
        kept.children.push_back({"parent", {{"link", parent}}, {}, {}});
        kept.children.push_back({"child", {{"link", child}}, {}, {}});
        if (const XmlElement* const origin = Only(joint, "origin", what)) {
            kept.children.push_back({"origin", {}, {}, {}});
            KeepTriple(*origin, "xyz", "the origin of " + what, kept);
            KeepTriple(*origin, "rpy", "the origin of " + what, kept);
        }
        if (type != "fixed") {
            TakeMovable(joint, type, what, kept);
        }
        const auto [hung, isNew] = parents.try_emplace(child, Hung{parent, name});
        if (!isNew) {
            Refuse(joint, "link " + Quoted(child) + " is already the child of joint " +
                              Quoted(hung->second.joint) + "; a link hangs on one joint alone");
        }
        document.joints.push_back({name, joint.at});
        plain.children.push_back(std::move(kept));
    }

    std::string TypeOf(const XmlElement& joint, const std::string& what) const
    {
        constexpr std::array<std::string_view, 4> kTypes{"revolute", "continuous", "prismatic",
                                                         "fixed"};
        constexpr std::string_view kRule = "it is one of: revolute, continuous, prismatic, fixed";
        const auto type = joint.Attribute("type");
        if (!type) {
            Refuse(joint, what + " has no type; " + std::string(kRule));
        }
        if (*type == "floating" || *type == "planar") {
            Refuse(joint, what + " is " + *type +
                              ", which is no single axis; put prismatic and revolute joints in its "
                              "place, or fix it");
        }
        if (std::find(kTypes.begin(), kTypes.end(), *type) == kTypes.end()) {
            Refuse(joint,
                   "the type of " + what + " is " + Quoted(*type) + "; " + std::string(kRule));
        }
        return *type;
    }

    /// The child element of this name; null where there is none.
    const XmlElement* Only(const XmlElement& joint, std::string_view name,
                           const std::string& what) const
    {
        const XmlElement* only = nullptr;
        for (const XmlElement& child : joint.children) {
            if (child.name == name) {
                if (only != nullptr) {
                    Refuse(child, what + " has a second <" + child.name + ">; keep one of them");
                }
                only = &child;
            }
        }
        return only;
    }

    std::string LinkOf(const XmlElement& joint, const std::string& role,
                       const std::string& what) const
    {
        const XmlElement* const element = Only(joint, role, what);
        const auto link = element == nullptr ? std::nullopt : element->Attribute("link");
        if (!link) {
            Refuse(element == nullptr ? joint : *element,
                   what + " has no " + role + "; add <" + role + " link=\"...\"/>");
        }
        if (links.count(*link) == 0) {
            Refuse(*element, "the " + role + " of " + what + " is " + Quoted(*link) +
                                 ", and there is no such link; name one that there is");
        }
        return *link;
    }

    void TakeMovable(const XmlElement& joint, const std::string& type, const std::string& what,
                     XmlElement& kept)
    {
        RefuseUnspeakableName(document.file, {*joint.Attribute("name"), joint.at});
        if (const XmlElement* const mimic = Only(joint, "mimic", what)) {
            Refuse(*mimic, what + " mimics another one, and an axis moves by itself; take the "
                                  "<mimic> out, or fix the joint");
        }
        if (++axes > kMaxAxes) {
            Refuse(joint, "more than " + std::to_string(kMaxAxes) +
                              " joints move; fix those that the work does not need");
        }
        if (const XmlElement* const axis = Only(joint, "axis", what)) {
            kept.children.push_back({"axis", {}, {}, {}});
            const auto direction = KeepTriple(*axis, "xyz", "the axis of " + what, kept);
            if (!direction || !Normalised(*direction)) {
                Refuse(*axis, "the axis of " + what +
                                  " has no length; give its direction, as in xyz=\"0 0 1\"");
            }
        }
        if (type != "continuous") {
            TakeLimits(joint, what, kept);
        }
    }

    void TakeLimits(const XmlElement& joint, const std::string& what, XmlElement& kept)
    {
        const XmlElement* const limit = Only(joint, "limit", what);
        const auto lower = limit == nullptr ? std::nullopt : limit->Attribute("lower");
        const auto upper = limit == nullptr ? std::nullopt : limit->Attribute("upper");
        if (!lower && !upper) {
            Refuse(limit == nullptr ? joint : *limit,
                   what + " has no limits; add <limit lower=\"...\" upper=\"...\"/>, or make it "
                          "continuous if it turns without end");
        }
        const std::string ofJoint = "the limit of " + what;
        const double low = numbers.Number(*limit, "lower", ofJoint).value_or(0.0);
        const double high = numbers.Number(*limit, "upper", ofJoint).value_or(0.0);
        if (low > high) {
            Refuse(*limit, "the limits of " + what +
                               " are in the wrong order; lower is not to be above upper");
        }
        // The two that have no part in where the joint stands are required, so that they stand
        // here, whatever the file says.
        kept.children.push_back({"limit",
                                 {{"lower", lower.value_or("0")},
                                  {"upper", upper.value_or("0")},
                                  {"effort", "0"},
                                  {"velocity", "0"}},
                                 {},
                                 {}});
    }

    /// Checks three numbers and puts them into the last element in `kept`. Nothing where there is
    /// no such attribute.
    std::optional<Vec3> KeepTriple(const XmlElement& element, const std::string& attribute,
                                   const std::string& what, XmlElement& kept) const
    {
        const auto values = numbers.Triple(element, attribute, what);
        if (values) {
            kept.children.back().attributes.emplace_back(attribute, *element.Attribute(attribute));
        }
        return values;
    }

    // The tree -----------------------------------------------------------------------------------

    void CheckTree() const
    {
        const Located<std::string>* root = nullptr;
        for (const Located<std::string>& link : document.links) {
            if (parents.count(link.value) > 0) {
                continue;
            }
            if (root != nullptr) {
                Refuse(link.at, "link " + Quoted(link.value) + " is the child of no joint, and " +
                                    "neither is " + Quoted(root->value) +
                                    "; all links but one hang on a joint");
            }
            root = &link;
        }
        if (document.links.empty()) {
            Refuse(document.robot.at, "there is no link in this robot; is it the right file?");
        }
        for (const Located<std::string>& link : document.links) {
            CheckPathToRoot(link);
        }
    }

    void CheckPathToRoot(const Located<std::string>& link) const
    {
        auto above = parents.find(link.value);
        for (std::size_t steps = 0; above != parents.end(); ++steps) {
            if (steps == parents.size()) {
                Refuse(link.at, "the joints above link " + Quoted(link.value) +
                                    " lead round in a circle, never to a root; hang one of them "
                                    "elsewhere");
            }
            above = parents.find(above->second.parent);
        }
    }

    UrdfNumbers numbers;
    UrdfDocument document;
    XmlElement plain; // what is kept
    std::set<std::string> links;
    std::set<std::string> joints;
    std::map<std::string, Hung> parents; // by the child's name
    std::size_t axes{0};
};

} // namespace

UrdfDocument CheckUrdf(std::string_view text, const std::string& file)
{
    return Checker(file).Check(ParseXml(text, file));
}

} // namespace host
