// The table of preconditions against random calls of every member on pictures of every kind: what is
// refused is explained, and what is explained is refused.
#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>

#include "tests/host/script/Judge.h"
#include "tests/support/Formats.h"

namespace {

using namespace support;
using script::MemberUse;

constexpr int kRounds = 150;  // calls of each member

const host::Class& PictureClass() { return host::Runtime::Get().ClassNamed("PictureTQX"); }

// Bytes from `least` to `least` + 126, so that those of two pictures differ.
void Fill(const Ref<Object>& picture, Random& random, int least) {
    if (!GetBool(picture, "Valid") || !GetObject(picture, "Memory")) return;
    const auto byte = [&] { return static_cast<std::uint8_t>(least + random.Below(127)); };
    if (const auto block = GetObject(picture, "MemoryTarget")) {
        std::generate_n(BlockAddress(block), BlockSize(block), byte);
        return;
    }
    const std::int64_t size = GetInt(picture, "RowSize");
    for (std::int64_t y = 0; y < GetInt(picture, "Height"); ++y) {
        const auto row = CallObject(picture, "RawRow", y);
        if (row) std::generate_n(BlockAddress(row), size, byte);
    }
}

class RandomPreconditions : public PluginTest {
  protected:
    static constexpr int kKinds = 22;

    Ref<Object> Plain() {
        static constexpr int kFormats[] = {1, 2, 4, 5, 6, 10, 11, 12, 13, 16, 20};
        const int format = kFormats[random_.Below(std::size(kFormats))];
        return New("PictureTQX", 7 + random_.Below(4), 7 + random_.Below(3), format);
    }

    Ref<Object> Closed() {
        const auto picture = Plain();
        Call(picture, "Close");
        return picture;
    }

    // Pictures in every state; the first ones are sound.
    Ref<Object> MakePicture(int kind) {
        const auto plain = Plain();
        switch (kind) {
            case 0:
                return New("PictureTQX", 9, 8, 14);
            case 1:
                return New("PictureTQX", 10, 8, 0);
            case 2:
                return Closed();
            case 3: {
                const auto view = CallObject(plain, "ClipImage");
                Call(plain, "Close");
                return view;
            }
            case 4:
                return CallObject(Closed(), "ClipImage");
            case 5:
                return New("PictureTQX", 0, 8, 1);
            case 6:
                return New("PictureTQX", 8, 0, 2);
            case 7:
                return CallObject(plain, "ClipImage", 13, 0, 3, 3);
            case 8:
                return CallObject(plain, "ClipImage", 0, 13, 3, 3);
            case 9:
                return CallObject(New("PictureTQX", 9, 8, 2), "RGBChannels");
            case 10:
                return CallObject(New("PictureTQX", 9, 8, 7), "AlphaChannel");
            case 11:
                return CallObject(plain, "MirroredView");
            case 12:
                return CallObject(plain, "ClipImage", 1, 2, 5, 4);
            case 13:
                return New("PictureTQX", MakeBlock(400), 6, 5, 1, random_.Below(2) * 32);
            case 14:
                return New("PictureTQX", 9, 8, 1, 0, ScratchFile());
            case 15:
                return New("PictureTQX", HostPicture(32, false), true);
            default:
                return plain;
        }
    }

    Ref<Object> ScratchFile() {
        return Ref<Object>::Share(FolderItem(ScratchPath("scratch" + std::to_string(++files_))).object());
    }

    static Value FolderItem(const std::string& path) {
        Values arguments = {Value(path)};
        return host::Invoke(*host::Runtime::Get().FindFunctions("GetFolderItem").front(), nullptr, arguments);
    }

    Ref<Object> HostPicture(int depth, bool masked) {
        const auto picture = New("Picture", 6, 5, depth);
        const auto graphics = GetObject(picture, "Graphics");
        Set(graphics, "ForeColor", Value(static_cast<sdk::Color>(0x112233)));
        Call(graphics, "FillRect", 0, 0, 6, 5);
        if (!masked) return picture;
        const auto mask = GetObject(GetObject(picture, "Mask"), "Graphics");
        Set(mask, "ForeColor", Value(static_cast<sdk::Color>(0x707070)));
        Call(mask, "FillRect", 0, 0, 6, 5);
        return picture;
    }

    int Number(const std::string& name) {
        static constexpr int kSmall[] = {-9, -5, -1, 0, 1, 2, 3, 4, 5, 7, 8, 9, 10, 11, 14, 21, 24};
        static constexpr int kWild[] = {std::numeric_limits<int>::min(), -100000, 100, 256, 257, 100000,
                                        std::numeric_limits<int>::max()};
        const bool costly = name == "Iterations" || name == "w" || name == "h" || name == "RowSize";
        if (!costly && random_.Below(8) == 0) return kWild[random_.Below(std::size(kWild))];
        return kSmall[random_.Below(std::size(kSmall))];
    }

    double Real() {
        static const double kReals[] = {-1, 0, 0.4, 1, 2.2, 30, 90, 720, 1e9, std::nan(""), INFINITY};
        return kReals[random_.Below(std::size(kReals))];
    }

    Ref<Object> Picture(int least) {
        const auto picture = MakePicture(random_.Below(kKinds));
        if (picture) Fill(picture, random_, least);
        return picture;
    }

    Value ObjectOf(const std::string& className, const std::string& name) {
        if (random_.Below(10) == 0) return Value(nullptr);
        if (host::SameName(className, "Picture")) {
            static constexpr int kDepths[] = {32, 32, 24, 8};
            return Value(HostPicture(kDepths[random_.Below(4)], random_.Below(2) == 0));
        }
        if (host::SameName(className, "MemoryBlock")) return Value(MakeBlock(Bytes(random_.Below(60) * 10, 3)));
        if (host::SameName(className, "FolderItem"))
            return random_.Below(4) ? Value(ScratchFile()) : FolderItem(random_.Below(2) ? "/usr" : "/none/at/all");
        if (host::SameName(name, "temp") && random_.Below(2)) return Value(New("PictureTQX", 12, 12, 14));
        return Value(Picture(1));
    }

    Value ArgumentFor(const host::Type& type, const std::string& name) {
        switch (type.kind) {
            case host::Kind::Boolean:
                return Value(random_.Below(2) == 0);
            case host::Kind::Color:
                return Value(static_cast<sdk::Color>(random_.Below(0x7F7F7F)));
            case host::Kind::Double:
                return Value(Real());
            case host::Kind::Array:
                return Value(host::MakeIntegerArray(std::vector<std::int32_t>(random_.Below(4) ? 25 : 9, 1)));
            case host::Kind::String:
                return Value(host::MakeString(std::string(random_.Below(300) + 1, '\3'), sdk::Encoding::None));
            case host::Kind::Object:
                return ObjectOf(type.className, name);
            default:
                return Value(Number(name));
        }
    }

    Values ArgumentsFor(const host::Method& method) {
        Values arguments;
        for (const host::Parameter& parameter : method.declaration.parameters)
            arguments.push_back(ArgumentFor(parameter.type, parameter.name));
        return arguments;
    }

    Random random_{20};
    int files_ = 0;
};

// What members without a result leave as it is though they did their work.
bool MayLeaveAllBytes(const MemberUse& use) {
    // One row or column is its own mirror image, and rows that lie on each other are inverted twice.
    static const char* const kNames[] = {"VMirror", "HMirror", "Rotate180", "Invert", "Close"};
    return std::any_of(std::begin(kNames), std::end(kNames), [&](const char* name) { return use.Name() == name; });
}

// Only a file may be refused by the system: no memory is short here, and no host fails.
bool IsLastResort(const MemberUse& use, const script::explain::BrokenPrecondition& told) {
    if (told.row->kind != script::explain::Row::Kind::Otherwise) return false;
    return use.arguments.size() != 5 || use.Name() != "Constructor";
}

TEST_F(RandomPreconditions, AreBrokenExactlyWhereMembersRefuse) {
    auto table = PluginTable();
    ASSERT_TRUE(table);
    std::map<std::string, int> problems;  // each once, with how often it was met
    int refusals = 0, successes = 0;
    Judge judge(*table, [&](const MemberUse& use, const Verdict& verdict) {
        ++(verdict.refused ? refusals : successes);
        for (const auto& broken : verdict.refuted)
            ++problems[use.Name() + " does its work, against line " + std::to_string(broken.row->line) + ": " +
                       broken.sentence];
        const bool explained = !verdict.told.empty() && !IsLastResort(use, verdict.told.front());
        if (!verdict.refused || explained || MayLeaveAllBytes(use)) return;
        std::string call = use.Name();
        for (const Value& argument : use.arguments) call += ' ' + host::Describe(argument);
        ++problems[call + " refuses unexplained"];
    });
    for (const auto* methods : {&PictureClass().methods(), &PictureClass().sharedMethods()})
        for (const host::Method& method : *methods)
            for (int round = 0; round < kRounds; ++round) {
                const bool constructs = method.declaration.name == "Constructor";
                const auto self = method.shared ? Ref<Object>()
                                  : constructs  ? host::NewObject(PictureClass())
                                                : Picture(128);
                if (!self && !method.shared) continue;
                judge.Call(method, self, ArgumentsFor(method));
                host::Runtime::Get().TakeRaised();
                if (!method.assignable()) continue;
                Value value = ArgumentFor(method.declaration.result, "value");
                judge.Assign(method, self, ArgumentsFor(method), value);
                host::Runtime::Get().TakeRaised();
            }
    for (const auto& [text, count] : problems) ADD_FAILURE() << text << " (" << count << " times)";
    EXPECT_GT(refusals, 3000);
    EXPECT_GT(successes, 3000);
    table.reset();
}

}  // namespace
