// Writes to bytes that a picture does not have.
//
// A class of pictures is known by what it registers: a constructor that takes a memory block, Width,
// Height and RowSize, properties of these names and PixelSize, and for each channel a property
// …Offset with a Boolean Has… beside it. A method that takes one index and gives a memory block in
// the picture's own memory tells where a row lies. The memory is the check's, against a protected
// page, and every view that a method without arguments or with a rectangle gives is tried as well.
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <map>
#include <optional>
#include <set>

#include "host/calls/Call.h"
#include "host/calls/HostFunctionSlot.h"
#include "host/calls/Runtime.h"
#include "host/check/Checks.h"
#include "host/check/Passes.h"
#include "host/check/Watch.h"

namespace host::check {

namespace {

constexpr std::int32_t kWidth = 6, kHeight = 4;
constexpr std::int32_t kRowSize = 128;  // of a pixel of sixteen bytes, and more
constexpr std::int32_t kBytes = kRowSize * kHeight;

// --- The memory ------------------------------------------------------------------------------------

// A page's end or start, with a protected page behind it or in front of it.
class ProtectedBytes {
  public:
    ProtectedBytes() : page_(static_cast<std::size_t>(getpagesize())) {
        void* pages = mmap(nullptr, 3 * page_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (pages == MAP_FAILED) throw std::bad_alloc();
        pages_ = static_cast<std::uint8_t*>(pages);
        mprotect(pages_ + page_, page_, PROT_READ | PROT_WRITE);
    }
    ~ProtectedBytes() { munmap(pages_, 3 * page_); }
    ProtectedBytes(const ProtectedBytes&) = delete;
    ProtectedBytes& operator=(const ProtectedBytes&) = delete;

    std::uint8_t* Begin(bool atEnd) const { return pages_ + page_ + (atEnd ? page_ - kBytes : 0); }

  private:
    std::size_t page_;
    std::uint8_t* pages_;
};

const ProtectedBytes& TheBytes() {
    static const ProtectedBytes bytes;
    return bytes;
}

std::uint8_t PatternAt(std::size_t i) { return static_cast<std::uint8_t>(i * 37 + i / 7 + 11); }

// --- Classes of pictures -----------------------------------------------------------------------------

struct PictureClass {
    const Class* type;
    const Method* constructor;
    const Property *width, *height, *pixelSize, *rowSize;
    std::vector<std::pair<const Property*, const Property*>> channels;  // …Offset, Has…
    std::vector<const Method*> rows;                                    // may tell where a row lies
};

const Property* IntegerNamed(const Class& type, std::string_view name) {
    const Property* property = type.FindProperty(name);
    return property && property->readable() && property->type.kind == Kind::Integer ? property : nullptr;
}

bool Takes(const Declaration& declaration, std::string_view name) {
    return std::any_of(declaration.parameters.begin(), declaration.parameters.end(), [&](const Parameter& parameter) {
        return SameName(parameter.name, name) && parameter.type.kind == Kind::Integer;
    });
}

bool TakesBlock(const Declaration& declaration) {
    return std::any_of(declaration.parameters.begin(), declaration.parameters.end(),
                       [](const Parameter& parameter) { return SameName(parameter.type.className, "MemoryBlock"); });
}

const Method* BlockConstructor(const Class& type) {
    for (const Method* method : type.FindMethods("Constructor")) {
        const Declaration& declaration = method->declaration;
        if (TakesBlock(declaration) && Takes(declaration, "Width") && Takes(declaration, "Height") &&
            Takes(declaration, "RowSize"))
            return method;
    }
    return nullptr;
}

std::optional<PictureClass> AsPictureClass(const Class& type) {
    PictureClass picture{&type,
                         BlockConstructor(type),
                         IntegerNamed(type, "Width"),
                         IntegerNamed(type, "Height"),
                         IntegerNamed(type, "PixelSize"),
                         IntegerNamed(type, "RowSize"),
                         {},
                         {}};
    if (!picture.constructor || !picture.width || !picture.height || !picture.pixelSize || !picture.rowSize) return {};
    constexpr std::string_view kOffset = "Offset";
    for (const Property& property : type.properties()) {
        if (!property.name.ends_with(kOffset)) continue;
        const std::string channel = property.name.substr(0, property.name.size() - kOffset.size());
        const Property* has = type.FindProperty("Has" + channel);
        if (has && has->type.kind == Kind::Boolean) picture.channels.emplace_back(&property, has);
    }
    for (const Method& method : type.methods()) {
        const Declaration& declaration = method.declaration;
        if (declaration.parameters.size() == 1 && declaration.parameters[0].type.kind == Kind::Integer &&
            SameName(declaration.result.className, "MemoryBlock"))
            picture.rows.push_back(&method);
    }
    if (picture.channels.empty() || picture.rows.empty()) return {};
    return picture;
}

// --- Which bytes a picture has -------------------------------------------------------------------------

enum class Share : std::uint8_t { None, Pixel, Channel };  // of a byte

std::int32_t NumberOf(const Property* property, Object* object) { return GetProperty(*property, object).ToInt32(); }

// Where a row lies in the memory; nothing when it lies elsewhere.
std::optional<std::ptrdiff_t> RowAt(const PictureClass& picture, Object* object, std::int32_t row,
                                    const std::uint8_t* memory) {
    for (const Method* method : picture.rows) {
        Value index(row);
        const Value block = Invoke(*method, object, {&index, 1});
        Runtime::Get().TakeRaised();
        if (!block.object()) continue;
        const std::uint8_t* at = HostFunctionSlot<sdk::kmemoryBlockGetPtr>::Call(block.object());
        if (at >= memory && at < memory + kBytes) return at - memory;
    }
    return {};
}

void Mark(std::vector<Share>& shares, std::ptrdiff_t at, Share share) {
    if (at >= 0 && at < kBytes) shares[static_cast<std::size_t>(at)] = share;
}

// Empty when none of its rows lies in the memory.
std::vector<Share> SharesOf(const PictureClass& picture, Object* object, const std::uint8_t* memory) {
    std::vector<Share> shares(kBytes, Share::None);
    bool any = false;
    const std::int32_t pixelSize = NumberOf(picture.pixelSize, object);
    std::vector<std::int32_t> offsets;
    for (const auto& [offset, has] : picture.channels)
        if (GetProperty(*has, object).ToBoolean()) offsets.push_back(NumberOf(offset, object));
    // A picture that names no channel has all of its pixels' bytes.
    const Share rest = offsets.empty() ? Share::Channel : Share::Pixel;
    for (std::int32_t y = 0; y < std::min(NumberOf(picture.height, object), kHeight); ++y) {
        const auto row = RowAt(picture, object, y, memory);
        if (!row) continue;
        any = true;
        const std::int32_t width = std::min(NumberOf(picture.width, object), kWidth);
        for (std::int32_t i = 0; i < width * pixelSize; ++i) Mark(shares, *row + i, rest);
        for (std::int32_t x = 0; x < width; ++x)
            for (const std::int32_t offset : offsets) Mark(shares, *row + x * pixelSize + offset, Share::Channel);
    }
    return any ? shares : std::vector<Share>();
}

// --- Instances -----------------------------------------------------------------------------------------

bool atEnd = true;  // of the page; which of the two it is lasts for a case

Expression ProtectedBlock() {
    return {"block", "Dim block As New MemoryBlock(" + std::to_string(kBytes) + ")\n", [] {
                return Value(Ref<Object>::Adopt(
                    FromPlugin(HostFunctionSlot<sdk::kPtrToMemoryBlock>::Call(TheBytes().Begin(atEnd)))));
            }};
}

// The constructor's arguments around a block, with one of the values that its constants offer.
std::vector<std::vector<Expression>> ConstructorLists(const PictureClass& picture, const Supply& supply,
                                                      const Expression& block) {
    std::vector<std::vector<Expression>> lists;
    for (auto list : ArgumentLists(picture.constructor->declaration, *picture.type, supply, false)) {
        const auto& parameters = picture.constructor->declaration.parameters;
        for (std::size_t i = 0; i < parameters.size(); ++i) {
            if (SameName(parameters[i].name, "Width")) list[i] = Literal(Value(kWidth));
            if (SameName(parameters[i].name, "Height")) list[i] = Literal(Value(kHeight));
            if (SameName(parameters[i].name, "RowSize")) list[i] = Literal(Value(kRowSize));
            if (SameName(parameters[i].type.className, "MemoryBlock")) list[i] = block;
        }
        lists.push_back(std::move(list));
    }
    return lists;
}

InstancePtr Whole(const PictureClass& picture, const std::vector<Expression>& arguments) {
    auto instance = std::make_shared<Instance>();
    const Expression creation = NewExpression(picture.type->name(), arguments);
    instance->label = "whole";
    instance->type = picture.type;
    instance->script = [creation](const std::string& name) {
        return creation.before + "Dim " + name + " As " + creation.text + "\n";
    };
    instance->make = [creation] { return Ref<Object>::Share(creation.make().object()); };
    return instance;
}

// A method that may give a view, and what it takes: nothing, or a rectangle inside.
std::optional<std::vector<Value>> ViewArguments(const PictureClass& picture, const Method& method) {
    const auto& parameters = method.declaration.parameters;
    if (!SameName(method.declaration.result.className, picture.type->name())) return {};
    const bool numbers = std::all_of(parameters.begin(), parameters.end(),
                                     [](const Parameter& parameter) { return parameter.type.kind == Kind::Integer; });
    if (parameters.empty()) return std::vector<Value>();
    if (numbers && parameters.size() == 4 && Takes(method.declaration, "width"))
        return std::vector<Value>{Value(1), Value(1), Value(kWidth - 3), Value(kHeight - 2)};
    return {};
}

InstancePtr View(const PictureClass& picture, const InstancePtr& whole, const Method& method,
                 const std::vector<Value>& arguments) {
    auto instance = std::make_shared<Instance>();
    std::vector<Expression> literals;
    for (const Value& argument : arguments) literals.push_back(Literal(argument));
    const std::string call = method.declaration.name + ListText(literals);
    const std::string type = picture.type->name();
    instance->label = method.declaration.name;
    instance->type = picture.type;
    instance->script = [whole, call, type](const std::string& name) {
        return whole->script("whole") + "Dim " + name + " As " + type + " = whole." + call + "\n";
    };
    instance->make = [whole, &method, arguments] {
        const Ref<Object> object = whole->make();
        std::vector<Value> values = arguments;
        return Ref<Object>::Share(object ? Invoke(method, object.get(), values).object() : nullptr);
    };
    return instance;
}

// A picture in the protected memory, and one just like it elsewhere. What a call works on together has
// the same channels: what else is written where they differ is a matter of definition.
struct Twins {
    InstancePtr watched;
    InstancePtr other;
};

std::vector<Twins> Instances(const PictureClass& picture, const Supply& supply) {
    std::vector<Twins> instances;
    const auto lists = ConstructorLists(picture, supply, ProtectedBlock());
    const auto otherLists =
        ConstructorLists(picture, supply, NewExpression("MemoryBlock", {Literal(Value(std::int32_t{kBytes}))}));
    for (std::size_t i = 0; i < lists.size(); ++i) {
        const Twins whole{Whole(picture, lists[i]), Whole(picture, otherLists[i])};
        instances.push_back(whole);
        for (const Method& method : picture.type->methods())
            if (const auto taken = ViewArguments(picture, method))
                instances.push_back(
                    {View(picture, whole.watched, method, *taken), View(picture, whole.other, method, *taken)});
    }
    return instances;
}

// --- Cases -----------------------------------------------------------------------------------------------

constexpr std::size_t kSelf = SIZE_MAX;

struct StrayCase {
    Case call;
    std::size_t watched = kSelf;  // the argument whose memory it is, or the instance
};

Expression AsArgument(const InstancePtr& instance, const std::string& name) {
    return {name, instance->script(name), [instance] { return Value(instance->make()); }};
}

class StrayCases {
  public:
    StrayCases(const PictureClass& picture, const Supply& supply) : picture_(picture), supply_(supply) {
        const std::vector<Twins> instances = Instances(picture, supply);
        // Extreme arguments on the views of the first format.
        constexpr std::size_t kBroad = 16;
        for (std::size_t i = 0; i < instances.size(); ++i)
            for (const Method& method : picture.type->methods()) {
                if (SameName(method.declaration.name, "Constructor")) continue;
                AddOn(instances[i], method, i < kBroad);
                AddAsArgument(instances[i], method);
            }
    }

    std::vector<StrayCase> Take() { return std::move(cases_); }

  private:
    bool IsOwn(const Parameter& parameter) const { return SameName(parameter.type.className, picture_.type->name()); }

    // Lists whose pictures are twins of the watched one.
    std::vector<std::vector<Expression>> Lists(const Declaration& declaration, const InstancePtr& other,
                                               bool extremes) const {
        auto lists = ArgumentLists(declaration, *picture_.type, supply_, extremes);
        for (auto& list : lists)
            for (std::size_t i = 0; i < list.size(); ++i)
                if (IsOwn(declaration.parameters[i]) && list[i].text != "nil")
                    list[i] = AsArgument(other, "other" + std::to_string(i + 1));
        return lists;
    }

    void AddOn(const Twins& twins, const Method& method, bool extremes) {
        Case one{Action::Call, picture_.type, &method, nullptr, twins.watched, {}, 0};
        for (auto& list : Lists(method.declaration, twins.other, extremes)) {
            one.arguments = std::move(list);
            cases_.push_back({one, kSelf});
            ++one.list;
        }
        if (!method.assignable()) return;
        Declaration setter = method.declaration;
        setter.parameters.push_back({{}, "value", method.declaration.result, {}});
        one.action = Action::Assign;
        one.arguments = Lists(setter, twins.other, false).front();
        cases_.push_back({one, kSelf});
    }

    void AddAsArgument(const Twins& twins, const Method& method) {
        const auto& parameters = method.declaration.parameters;
        for (std::size_t i = 0; i < parameters.size(); ++i) {
            if (!IsOwn(parameters[i])) continue;
            Case one{Action::Call, picture_.type, &method, nullptr, twins.other, {}, 0};
            one.arguments = Lists(method.declaration, twins.other, false).front();
            one.arguments[i] = AsArgument(twins.watched, "view");
            cases_.push_back({one, i});
        }
    }

    const PictureClass& picture_;
    const Supply& supply_;
    std::vector<StrayCase> cases_;
};

// What a call may write that its picture does not have. Some members mean to: those that are defined
// to clear whole pixels or to fill whole rows.
enum StrayKind : std::int32_t { kOtherChannels = 100, kBesideColumns };

const char* StrayText(std::int32_t kind) {
    return kind == kOtherChannels ? "bytes of pixels that are no channel of the picture are written by "
                                  : "bytes beside the picture's columns are written by ";
}

Complaint Compare(const std::vector<Share>& shares, const std::uint8_t* memory) {
    bool other = false, beside = false;
    for (std::size_t i = 0; i < kBytes; ++i) {
        if (memory[i] == PatternAt(i)) continue;
        other |= shares[i] == Share::Pixel;
        beside |= shares[i] == Share::None;
    }
    if (beside) return {kBesideColumns, StrayText(kBesideColumns), true};
    return {other ? kOtherChannels : 0, other ? StrayText(kOtherChannels) : "", true};
}

Complaint PerformOn(const PictureClass& picture, const StrayCase& one) {
    std::uint8_t* const memory = TheBytes().Begin(atEnd);
    Prepared prepared(one.call);
    Runtime::Get().TakeRaised();
    if (!prepared.IsReady()) return {};
    Object* const watched = one.watched == kSelf ? prepared.self().get() : prepared.arguments()[one.watched].object();
    if (!watched) return {};
    const std::vector<Share> shares = SharesOf(picture, watched, memory);
    if (shares.empty()) return {};
    for (std::size_t i = 0; i < kBytes; ++i) memory[i] = PatternAt(i);
    const Value result = prepared.Perform();
    Runtime::Get().TakeRaised();
    return Compare(shares, memory);
}

Complaint PerformAtBothEnds(const PictureClass& picture, const StrayCase& one) {
    Complaint complaint;
    for (const bool end : {true, false}) {
        atEnd = end;
        complaint = PerformOn(picture, one);
        if (!complaint.text.empty()) break;
    }
    return complaint;
}

// All members are named, so that those that mean to and those that don't can be told apart.
void Tell(Outcome& outcome, const std::vector<StrayCase>& cases, const ChildrenReport& report,
          const ScriptOfCase& script) {
    std::map<std::int32_t, std::set<std::string>> names;
    for (const Failure& failure : report.failures)
        if (!failure.crashed) names[failure.complaint.kind].insert(cases[failure.index].call.method->declaration.name);
    std::string text;
    for (const auto& [kind, members] : names) {
        text += (text.empty() ? "" : "; ") + std::string(StrayText(kind));
        for (const std::string& name : members) text += (name == *members.begin() ? "" : ", ") + name;
    }
    for (const Failure& failure : report.failures)
        if (!failure.crashed) outcome.Convict(CheckStatus::Warn, text, script(failure.index));
}

Outcome CheckPictures(const PictureClass& picture, Context& context) {
    const std::vector<StrayCase> cases = StrayCases(picture, context.TheSupply()).Take();
    std::set<std::pair<const Method*, std::int32_t>> told;  // once a member and kind is enough
    ChildrenJob job = context.Job();
    job.count = cases.size();
    job.mostFailures = cases.size();
    job.run = [&](std::size_t i) {
        const Complaint complaint = PerformAtBothEnds(picture, cases[i]);
        return told.count({cases[i].call.method, complaint.kind}) ? Complaint{0, "", true} : complaint;
    };
    job.noteFailure = [&](const Failure& failure) {
        told.insert({cases[failure.index].call.method, failure.complaint.kind});
    };
    const ChildrenReport report = RunInChildren(job);
    const auto script = [&](std::size_t i) { return cases[i].call.Script(); };
    Outcome outcome{
        CheckStatus::Pass, report.run, Counted(report.counted, "call") + " on views of protected memory", "", {}};
    Tell(outcome, cases, report, script);
    JudgeSlow(outcome, report, script);
    Judge(outcome, CrashesOf(report), script);
    return outcome;
}

}  // namespace

Outcomes CheckStrayWrites(Context& context) {
    for (const Class* type : context.Classes())
        if (const auto picture = AsPictureClass(*type)) return Only("stray-writes", CheckPictures(*picture, context));
    return Only("stray-writes", {CheckStatus::Skip, 0, "no class is one of pictures in a memory block", "", {}});
}

}  // namespace host::check
