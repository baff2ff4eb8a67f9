#include "machine/UrdfVisuals.h"

#include <algorithm>
#include <map>
#include <string_view>
#include <utility>

#include "text/Numbers.h"
#include "text/Quoted.h"

namespace host
{

namespace
{

/// The first child element of this name; null where there is none.
const XmlElement* Child(const XmlElement& element, std::string_view name)
{
    const auto child = std::find_if(element.children.begin(), element.children.end(),
                                    [name](const XmlElement& one) { return one.name == name; });
    return child == element.children.end() ? nullptr : &*child;
}

class VisualReader
{
  public:
    explicit VisualReader(const UrdfNumbers& ofFile) : numbers(ofFile) {}

    std::vector<UrdfVisual> Read(const XmlElement& root)
    {
        for (const XmlElement& child : root.children) {
            if (child.name == "material") {
                NoteMaterial(child);
            } else if (child.name == "link") {
                TakeLink(child);
            }
        }
        // Only now all materials are known.
        for (const auto& [visual, material] : unpainted) {
            if (const auto known = colors.find(material); known != colors.end()) {
                visuals[visual].color = known->second;
            }
        }
        return std::move(visuals);
    }

  private:
    void TakeLink(const XmlElement& link)
    {
        for (const XmlElement& child : link.children) {
            if (child.name == "visual") {
                TakeVisual({link.Attribute("name").value_or(""), link.at}, child);
            }
        }
    }

    void TakeVisual(const Located<std::string>& link, const XmlElement& visual)
    {
        const std::string ofLink = " of link " + Quoted(link.value);
        UrdfVisual taken;
        taken.link = link;
        if (const XmlElement* const origin = Child(visual, "origin")) {
            const std::string what = "the origin of a visual" + ofLink;
            taken.xyz = numbers.Triple(*origin, "xyz", what).value_or(Vec3{});
            taken.rpy = numbers.Triple(*origin, "rpy", what).value_or(Vec3{});
        }
        const XmlElement* const material = Child(visual, "material");
        if (material != nullptr) {
            taken.color = NoteMaterial(*material);
        }
        const XmlElement* const geometry = Child(visual, "geometry");
        if (geometry == nullptr || !TakeShape(*geometry, ofLink, taken)) {
            return;
        }
        if (material != nullptr && !taken.color) {
            unpainted.emplace_back(visuals.size(), material->Attribute("name").value_or(""));
        }
        visuals.push_back(std::move(taken));
    }

    /// False for a shape that is left out.
    bool TakeShape(const XmlElement& geometry, const std::string& ofLink, UrdfVisual& taken) const
    {
        if (const XmlElement* const box = Child(geometry, "box")) {
            taken.shape = Shape::Box;
            taken.size = Lengths(*box, "size", ofLink, "0.4 0.3 0.1");
            return true;
        }
        if (const XmlElement* const cylinder = Child(geometry, "cylinder")) {
            taken.shape = Shape::Cylinder;
            taken.size = Lengths(*cylinder, "radius", ofLink, "0.05");
            taken.size.push_back(Lengths(*cylinder, "length", ofLink, "0.3").front());
            return true;
        }
        if (const XmlElement* const sphere = Child(geometry, "sphere")) {
            taken.shape = Shape::Sphere;
            taken.size = Lengths(*sphere, "radius", ofLink, "0.05");
            return true;
        }
        return false;
    }

    std::vector<double> Lengths(const XmlElement& shape, const std::string& attribute,
                                const std::string& ofLink, const std::string& example) const
    {
        const std::string what = "the " + shape.name + ofLink;
        const auto lengths = numbers.Numbers(shape, attribute, what, example);
        if (!lengths) {
            numbers.Refuse(shape, what + " has no " + attribute + "; add " + attribute + "=\"" +
                                      example + "\", in metres");
        }
        const double least = *std::min_element(lengths->begin(), lengths->end());
        if (least < 0.0) {
            numbers.Refuse(shape, attribute + " of " + what + " has " + RoundedText(least) +
                                      ", and no length is below 0; correct it");
        }
        return *lengths;
    }

    /// Its color, which its name stands for from here on, unless another one was first; nothing
    /// where it has none.
    std::optional<Color> NoteMaterial(const XmlElement& material)
    {
        const std::string name = material.Attribute("name").value_or("");
        const XmlElement* const element = Child(material, "color");
        const std::string what = "the color of material " + Quoted(name);
        const auto parts = element == nullptr
                               ? std::nullopt
                               : numbers.Numbers(*element, "rgba", what, "0.9 0.5 0.1 1");
        if (!parts) {
            return std::nullopt;
        }
        Color color{};
        for (std::size_t i = 0; i < color.size(); ++i) {
            color[i] = (*parts)[i];
            if (color[i] < 0.0 || color[i] > 1.0) {
                numbers.Refuse(*element, "rgba of " + what + " has " + RoundedText(color[i]) +
                                             ", and each of its numbers is from 0 to 1; correct "
                                             "it");
            }
        }
        colors.emplace(name, color);
        return color;
    }

    const UrdfNumbers& numbers;
    std::vector<UrdfVisual> visuals;
    std::map<std::string, Color> colors;                        // by material
    std::vector<std::pair<std::size_t, std::string>> unpainted; // visuals, their materials
};

} // namespace

std::vector<UrdfVisual> UrdfVisualsOf(const XmlElement& root, const UrdfNumbers& numbers)
{
    return VisualReader(numbers).Read(root);
}

} // namespace host
