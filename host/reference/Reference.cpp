// Classes and members written out for a person at a terminal.
#include "host/reference/Reference.h"

#include <algorithm>
#include <map>

#include "host/calls/Declaration.h"
#include "host/calls/Runtime.h"
#include "host/objects/NearestName.h"
#include "host/reference/Descriptions.h"
#include "host/reference/ReferenceJson.h"
#include "host/reference/Spelling.h"

namespace host {

namespace {

// --- Texts of members ---------------------------------------------------------------------

std::string Joined(const std::vector<std::string>& parts) {
    std::string text;
    for (const std::string& part : parts) text += (text.empty() ? "" : ", ") + part;
    return text;
}

bool IsConstructor(const Method& method) { return SameName(method.declaration.name, "Constructor"); }

std::string Marks(const Method& method) {
    std::vector<std::string> marks;
    if (method.assignable()) marks.push_back("assignable");
    if (!(method.flags & sdk::kMemberPortable)) marks.push_back("not portable");
    return Joined(marks);
}

std::string Marks(const Property& property) {
    std::vector<std::string> marks;
    if (!property.writable()) marks.push_back("read-only");
    if (!property.readable()) marks.push_back("write-only");
    if (!(property.flags & sdk::kMemberPortable)) marks.push_back("not portable");
    return Joined(marks);
}

std::string TextOf(const Method& method, const Class& type) {
    const Declaration declaration = SpelledTypes(method.declaration);
    const std::string text = DeclarationText(declaration);
    if (IsConstructor(method)) return "New " + type.name() + text.substr(declaration.name.size());
    return method.shared ? type.name() + "." + text : text;
}

std::string TextOf(const Property& property) { return property.name + " As " + TypeText(SpelledType(property.type)); }

// --- Lines ----------------------------------------------------------------------------------

// Lines no longer than the page is wide, each member indented by two and its further lines by six.
class Page {
  public:
    explicit Page(int columns) : columns_(static_cast<std::size_t>(std::max(columns, 60))) {}

    void Title(const std::string& title, char underline) {
        if (!text_.empty()) text_ += '\n';
        text_ += title + "\n" + std::string(title.size(), underline) + "\n";
    }

    void Heading(const std::string& heading) { text_ += "\n" + heading + "\n"; }

    // The marks follow in brackets.
    void Entry(const std::string& entry, const std::string& marks) {
        Wrap(marks.empty() ? entry : entry + " [" + marks + "]", "  ", "      ", ",).");
    }

    // Lines that stay as they are.
    void Lines(std::string_view lines) {
        for (std::size_t end; (end = lines.find('\n')) != std::string_view::npos; lines.remove_prefix(end + 1))
            text_ += "  " + std::string(lines.substr(0, end + 1));
    }

    // Short texts side by side, filled downwards.
    void Table(const std::vector<std::string>& cells) {
        std::size_t width = 0;
        for (const std::string& cell : cells) width = std::max(width, cell.size() + 2);
        const std::size_t across = std::max<std::size_t>(1, (columns_ - 2) / width);
        const std::size_t rows = (cells.size() + across - 1) / across;
        for (std::size_t row = 0; row < rows; ++row) {
            std::string line = "  ";
            for (std::size_t i = row; i < cells.size(); i += rows) {
                line += cells[i];
                if (i + rows < cells.size()) line.append(width - cells[i].size(), ' ');
            }
            text_ += line + "\n";
        }
    }

    void Paragraph(const std::string& paragraph, std::string_view ends = "") { Wrap(paragraph, "", "", ends); }

    const std::string& text() const { return text_; }

  private:
    // Breaks the text at blanks, of a declaration only where a parameter or the brackets end: behind
    // one of `ends`, if there are any.
    void Wrap(std::string_view text, const char* firstIndent, const char* indent, std::string_view ends) {
        std::string line = firstIndent;
        bool empty = true;
        while (!text.empty()) {
            const std::size_t end = UnitLength(text, ends);
            if (!empty && line.size() + 1 + end > columns_) {
                text_ += line + "\n";
                line = indent;
                empty = true;
            }
            if (!empty) line += ' ';
            line += text.substr(0, end);
            empty = false;
            text.remove_prefix(std::min(end + 1, text.size()));
        }
        text_ += line + "\n";
    }

    static std::size_t UnitLength(std::string_view text, std::string_view ends) {
        for (std::size_t at = 1; at < text.size(); ++at)
            if (text[at] == ' ' && (ends.empty() || ends.find(text[at - 1]) != std::string_view::npos)) return at;
        return text.size();
    }

    std::size_t columns_;
    std::string text_;
};

// --- Groups ---------------------------------------------------------------------------------

// Members in alphabetical order; those of one name stay as declared.
template <class Member, class NameOf>
std::vector<const Member*> Sorted(const std::deque<Member>& members, NameOf name) {
    std::vector<const Member*> sorted;
    for (const Member& member : members) sorted.push_back(&member);
    std::stable_sort(sorted.begin(), sorted.end(),
                     [&](const Member* a, const Member* b) { return LowerName(name(*a)) < LowerName(name(*b)); });
    return sorted;
}

std::vector<const Method*> SortedMethods(const std::deque<Method>& methods) {
    return Sorted(methods, [](const Method& method) { return method.declaration.name; });
}

void WriteMethods(Page& page, const Class& type, bool constructors) {
    bool any = false;
    for (const Method* method : SortedMethods(type.methods())) {
        if (IsConstructor(*method) != constructors) continue;
        if (!any) page.Heading(constructors ? "Constructors" : "Methods");
        any = true;
        page.Entry(TextOf(*method, type), Marks(*method));
    }
}

void WriteSharedMethods(Page& page, const Class& type) {
    if (type.sharedMethods().empty()) return;
    page.Heading("Shared methods");
    for (const Method* method : SortedMethods(type.sharedMethods())) page.Entry(TextOf(*method, type), Marks(*method));
}

void WriteProperties(Page& page, const Class& type) {
    if (type.properties().empty()) return;
    page.Heading("Properties");
    for (const Property* property : Sorted(type.properties(), [](const Property& p) { return p.name; }))
        page.Entry(TextOf(*property), Marks(*property));
}

void WriteEvents(Page& page, const Class& type) {
    if (type.events().empty()) return;
    page.Heading("Events");
    for (const Event& event : type.events()) page.Entry(DeclarationText(SpelledTypes(event.declaration)), "");
}

// A name up to its second capital letter or its first digit: "Scale" of "ScaleCubic".
std::string FirstWord(const std::string& name) {
    std::size_t end = 1;
    const auto starts = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'); };
    while (end < name.size() && !starts(name[end])) ++end;
    return name.substr(0, end);
}

std::string CommonStart(const std::vector<const Constant*>& constants) {
    std::string start = constants.front()->name;
    for (const Constant* constant : constants) {
        const auto differ = std::mismatch(start.begin(), start.end(), constant->name.begin(), constant->name.end());
        start.erase(differ.first, start.end());
    }
    return start;
}

void WriteConstants(Page& page, const Class& type) {
    std::vector<std::string> order;
    std::map<std::string, std::vector<const Constant*>> groups;
    for (const Constant& constant : type.constants()) {
        auto& group = groups[FirstWord(constant.name)];
        if (group.empty()) order.push_back(FirstWord(constant.name));
        group.push_back(&constant);
    }
    for (const std::string& word : order) {
        const auto& group = groups[word];
        page.Heading(group.size() > 1 ? "Constants " + CommonStart(group) + "..." : "Constant");
        std::vector<std::string> cells;
        for (const Constant* constant : group) cells.push_back(constant->name + " = " + Describe(constant->value));
        page.Table(cells);
    }
}

std::string Counted(std::size_t count, const char* one, const char* many) {
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

std::string Summary(const Class& type) {
    const auto constructors =
        static_cast<std::size_t>(std::count_if(type.methods().begin(), type.methods().end(), IsConstructor));
    std::vector<std::string> parts;
    const auto add = [&](std::size_t count, const char* one, const char* many) {
        if (count > 0) parts.push_back(Counted(count, one, many));
    };
    add(constructors, "constructor", "constructors");
    add(type.methods().size() - constructors, "method", "methods");
    add(type.sharedMethods().size(), "shared method", "shared methods");
    add(type.properties().size(), "property", "properties");
    add(type.events().size(), "event", "events");
    add(type.constants().size(), "constant", "constants");
    std::string text = type.superclass() ? "Inherits " + type.superclass()->name() + ". " : "";
    return text + (parts.empty() ? "No members of its own." : Joined(parts) + ".");
}

void WriteDescription(Page& page, std::string_view name) {
    const Description* const description = FindDescription(name);
    if (description) page.Paragraph(std::string(description->sentence));
}

void WriteExample(Page& page, std::string_view name) {
    const Description* const description = FindDescription(name);
    if (!description) return;
    page.Heading("Example");
    page.Lines(description->example);
}

void WriteClass(Page& page, const Class& type) {
    page.Title(type.name(), '=');
    WriteDescription(page, type.name());
    page.Paragraph(Summary(type), ",.");
    WriteMethods(page, type, true);
    WriteMethods(page, type, false);
    WriteSharedMethods(page, type);
    WriteProperties(page, type);
    WriteEvents(page, type);
    WriteConstants(page, type);
    WriteExample(page, type.name());
}

// --- One member -----------------------------------------------------------------------------

// Writes every member of one name that the class declares itself.
void WriteMember(Page& page, const Class& type, std::string_view name) {
    for (const auto* list : {&type.methods(), &type.sharedMethods()})
        for (const Method& method : *list)
            if (SameName(method.declaration.name, name)) page.Entry(TextOf(method, type), Marks(method));
    for (const Property& property : type.properties())
        if (SameName(property.name, name)) page.Entry(TextOf(property), Marks(property));
    for (const Event& event : type.events())
        if (SameName(event.declaration.name, name))
            page.Entry("Event " + DeclarationText(SpelledTypes(event.declaration)), "");
    for (const Constant& constant : type.constants())
        if (SameName(constant.name, name)) page.Entry(constant.name + " = " + Describe(constant.value), "");
    const std::string whole = type.name() + '.' + std::string(name);
    WriteDescription(page, whole);
    WriteExample(page, whole);
}

std::vector<std::string> MemberNames(const Class& type) {
    std::vector<std::string> names;
    for (const Method& method : type.methods()) names.push_back(method.declaration.name);
    for (const Method& method : type.sharedMethods()) names.push_back(method.declaration.name);
    for (const Property& property : type.properties()) names.push_back(property.name);
    for (const Event& event : type.events()) names.push_back(event.declaration.name);
    for (const Constant& constant : type.constants()) names.push_back(constant.name);
    std::sort(names.begin(), names.end());
    names.erase(std::unique(names.begin(), names.end()), names.end());
    return names;
}

std::vector<std::string> ClassNames(std::span<const Class* const> classes) {
    std::vector<std::string> names;
    for (const Class* type : classes) names.push_back(type->name());
    return names;
}

std::string ClassesAsText(std::span<const Class* const> classes, int columns) {
    Page page(columns);
    for (const Class* type : classes) WriteClass(page, *type);
    return page.text();
}

std::string Offer(const std::vector<std::string>& names) {
    return names.empty() ? "" : " The nearest: " + Joined(names) + ".";
}

const Class* FindIn(std::span<const Class* const> classes, std::string_view name) {
    for (const Class* type : classes)
        if (SameName(type->name(), name)) return type;
    return nullptr;
}

bool DescribeMember(std::span<const Class* const> classes, std::string_view name, const ReferenceRequest& request,
                    std::string& text) {
    Page page(request.columns);
    std::vector<std::string> names = ClassNames(classes);
    const std::vector<std::string> functions = Runtime::Get().FunctionNames();
    names.insert(names.end(), functions.begin(), functions.end());
    std::vector<const Class*> found;
    for (const Class* type : classes) {
        const std::vector<std::string> members = MemberNames(*type);
        names.insert(names.end(), members.begin(), members.end());
        if (std::none_of(members.begin(), members.end(), [&](const auto& member) { return SameName(member, name); }))
            continue;
        page.Title(type->name(), '=');
        WriteMember(page, *type, name);
        found.push_back(type);
    }
    if (found.empty())
        text = "There is no member \"" + std::string(name) + "\"." + Offer(NearNames(name, names)) + "\n";
    else
        text = request.json ? MemberAsJson(found, name) : page.text();
    return !found.empty();
}

}  // namespace

std::vector<std::string> NearNames(std::string_view name, const std::vector<std::string>& names) {
    const std::string wanted = LowerName(name);
    std::vector<std::pair<std::size_t, std::string>> near;
    for (const std::string& candidate : names) {
        const std::string lower = LowerName(candidate);
        const std::size_t distance = EditDistance(wanted, lower);
        const bool part = wanted.size() >= 3 && lower.find(wanted) != std::string::npos;
        if (part || distance <= 1 + wanted.size() / 4) near.emplace_back(part ? 0 : distance, candidate);
    }
    std::stable_sort(near.begin(), near.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<std::string> offered;
    for (const auto& entry : near)
        if (offered.size() < 3 && std::find(offered.begin(), offered.end(), entry.second) == offered.end())
            offered.push_back(entry.second);
    return offered;
}

bool DescribeClasses(std::span<const Class* const> classes, const ReferenceRequest& request, std::string& text) {
    const std::size_t dot = request.what.find('.');
    const std::string first = request.what.substr(0, dot);
    const Class* one = FindIn(classes, first);
    const auto asked = one ? std::span<const Class* const>(&one, 1) : classes;
    if (dot != std::string::npos && !one) {
        text = "There is no class \"" + first + "\"." + Offer(NearNames(first, ClassNames(classes))) + "\n";
        return false;
    }
    if (dot != std::string::npos) return DescribeMember(asked, request.what.substr(dot + 1), request, text);
    if (!first.empty() && !one) return DescribeMember(classes, first, request, text);
    text = request.json ? ClassesAsJson(asked) : ClassesAsText(asked, request.columns);
    return true;
}

bool DescribeFunction(std::string_view name, const ReferenceRequest& request, std::string& text) {
    const std::vector<const Method*> functions = Runtime::Get().FindFunctions(name);
    const std::string_view ofLanguage = LanguageFunction(name);
    if (functions.empty() && ofLanguage.empty()) return false;
    Page page(request.columns);
    const std::string declared = functions.empty() ? std::string(ofLanguage) : functions[0]->declaration.name;
    page.Title(declared.substr(0, declared.find('(')), '=');
    WriteDescription(page, name);
    page.Heading("Declarations");
    if (functions.empty()) page.Entry(declared, "");
    for (const Method* function : functions) page.Entry(DeclarationText(SpelledTypes(function->declaration)), "");
    WriteExample(page, name);
    text = request.json && !functions.empty() ? FunctionsAsJson(functions) : page.text();
    return true;
}

std::string ListNames(std::span<const Class* const> classes, int columns) {
    Page page(columns);
    std::vector<std::string> names = ClassNames(classes);
    std::sort(names.begin(), names.end());
    page.Title("Framework", '=');
    page.Heading("Classes");
    page.Table(names);
    page.Heading("Functions");
    page.Table(Runtime::Get().FunctionNames());
    return page.text();
}

}  // namespace host
