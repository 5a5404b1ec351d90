// Looking for texts in texts: without regard to case, but for the functions ending in B, which
// compare and count bytes.
#include <algorithm>
#include <cstring>

#include "host/framework/Characters.h"
#include "host/framework/QuickForms.h"
#include "host/framework/Support.h"
#include "host/framework/TextFunctions.h"

namespace host {

namespace {

sdk::Encoding EncodingOfText(sdk::String* text) { return EncodingOf(FromPlugin(text)); }

std::string LowerAscii(std::string_view text) {
    std::string lower(text);
    for (char& c : lower)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return lower;
}

bool HasLetters(std::string_view text) {
    return std::any_of(text.begin(), text.end(), [](char c) { return (c | 0x20) >= 'a' && (c | 0x20) <= 'z'; });
}

// As std::string_view::find, in time for the lengths alone, however often what is wanted nearly matches.
std::size_t FindBytes(std::string_view text, std::string_view wanted, std::size_t from) {
    if (from > text.size()) return std::string_view::npos;
    if (wanted.empty()) return from;
    const char* const start = text.data() + from;
    const std::size_t length = text.size() - from;
    if (wanted.size() > length) return std::string_view::npos;  // an empty text may have no address
    const void* const found = wanted.size() == 1 ? std::memchr(start, static_cast<unsigned char>(wanted[0]), length)
                                                 : memmem(start, length, wanted.data(), wanted.size());
    return found ? static_cast<std::size_t>(static_cast<const char*>(found) - text.data()) : std::string_view::npos;
}

bool IsNarrow(sdk::Encoding encoding) { return encoding == sdk::Encoding::Utf8 || encoding == sdk::Encoding::Ascii; }

// Two texts, brought to where they can be compared: by characters or by bytes. Where each character is one
// byte, the bytes are searched as they are, or in lower case.
class Search {
  public:
    Search(sdk::String* text, sdk::String* wanted, bool byBytes)
        : bytes_(Bytes(text)), encoding_(byBytes ? sdk::Encoding::None : EncodingOfText(text)) {
        const bool exact = encoding_ == sdk::Encoding::None;
        if (exact || AreAscii(wanted))
            SearchBytes(Bytes(wanted), exact || !HasLetters(Bytes(wanted)));
        else
            SearchCharacters(wanted);
    }
    Search(const Search&) = delete;
    Search& operator=(const Search&) = delete;

    static constexpr std::size_t kNone = std::u32string::npos;

    // The index of the first character of the next match from one on; kNone when there is none.
    std::size_t Find(std::size_t from) const {
        return byBytes_ ? FindBytes(searched_, wantedBytes_, from) : text_.characters.find(wanted_, from);
    }

    std::size_t WantedLength() const { return byBytes_ ? wantedBytes_.size() : wanted_.size(); }
    std::size_t Length() const { return byBytes_ ? bytes_.size() : text_.characters.size(); }

    // The bytes between two characters.
    std::string_view Between(std::size_t from, std::size_t to) const {
        if (byBytes_) return bytes_.substr(from, to - from);
        return bytes_.substr(text_.starts[from], text_.starts[to] - text_.starts[from]);
    }

  private:
    bool AreAscii(sdk::String* wanted) const {
        const sdk::Encoding own = EncodingOfText(wanted);
        const bool narrow = IsNarrow(encoding_) && (IsNarrow(own) || own == sdk::Encoding::None);
        return narrow && IsAscii(Bytes(wanted)) && IsAscii(bytes_);
    }

    void SearchBytes(std::string_view wanted, bool asTheyAre) {
        byBytes_ = true;
        searched_ = asTheyAre ? bytes_ : std::string_view(lower_ = LowerAscii(bytes_));
        wantedBytes_ = asTheyAre ? wanted : std::string_view(lowerWanted_ = LowerAscii(wanted));
    }

    void SearchCharacters(sdk::String* wanted) {
        text_ = Fold(bytes_, encoding_);
        // Text is looked for in the encoding of where it is looked for.
        const sdk::Encoding own = EncodingOfText(wanted);
        const bool convert = own != encoding_ && own != sdk::Encoding::None;
        const Ref<String> converted =
            convert ? ConvertEncoding(Ref<String>::Share(FromPlugin(wanted)), encoding_) : Ref<String>();
        wanted_ = Fold(convert ? Bytes(converted) : Bytes(wanted), encoding_).characters;
    }

    std::string_view bytes_;
    sdk::Encoding encoding_;
    bool byBytes_ = false;
    std::string lower_, lowerWanted_;
    std::string_view searched_, wantedBytes_;  // as they are or those
    FoldedText text_;
    std::u32string wanted_;
};

// --- InStr ----------------------------------------------------------------------------------

// Counted from 1; 0 when it isn't there. An empty text is found where the search starts.
std::int32_t PositionFrom(std::int32_t start, sdk::String* text, sdk::String* wanted, bool byBytes) {
    const Search search(text, wanted, byBytes);
    const auto from = static_cast<std::size_t>(std::max(start, 1) - 1);
    const std::size_t found = from > search.Length() ? Search::kNone : search.Find(from);
    return found == Search::kNone ? 0 : static_cast<std::int32_t>(found + 1);
}

std::int32_t InStrFrom(std::int32_t start, sdk::String* text, sdk::String* wanted) {
    return PositionFrom(start, text, wanted, false);
}
std::int32_t InStrFromB(std::int32_t start, sdk::String* text, sdk::String* wanted) {
    return PositionFrom(start, text, wanted, true);
}
std::int32_t InStr(sdk::String* text, sdk::String* wanted) { return PositionFrom(1, text, wanted, false); }
std::int32_t InStrB(sdk::String* text, sdk::String* wanted) { return PositionFrom(1, text, wanted, true); }

// --- Replace --------------------------------------------------------------------------------

sdk::String* ReplaceUpTo(std::size_t most, sdk::String* text, sdk::String* wanted, sdk::String* by, bool byBytes) {
    const Search search(text, wanted, byBytes);
    std::string result;
    result.reserve(Bytes(text).size() + Bytes(text).size() / 4);
    std::size_t at = 0;
    for (std::size_t count = 0; search.WantedLength() > 0 && count < most; ++count) {
        const std::size_t found = search.Find(at);
        if (found == Search::kNone) break;
        AppendText(result, search.Between(at, found));
        AppendText(result, Bytes(by));
        at = found + search.WantedLength();
    }
    AppendText(result, search.Between(at, search.Length()));
    return GiveString(result, EncodingOfText(text));
}

sdk::String* Replace(sdk::String* text, sdk::String* wanted, sdk::String* by) {
    return ReplaceUpTo(1, text, wanted, by, false);
}
sdk::String* ReplaceB(sdk::String* text, sdk::String* wanted, sdk::String* by) {
    return ReplaceUpTo(1, text, wanted, by, true);
}
sdk::String* ReplaceAll(sdk::String* text, sdk::String* wanted, sdk::String* by) {
    return ReplaceUpTo(SIZE_MAX, text, wanted, by, false);
}
sdk::String* ReplaceAllB(sdk::String* text, sdk::String* wanted, sdk::String* by) {
    return ReplaceUpTo(SIZE_MAX, text, wanted, by, true);
}

// --- Split and Join -------------------------------------------------------------------------

// Calls `visit(from, to)` for each part between the delimiters while it gives true. An empty text has
// no parts; with an empty delimiter they are the single characters.
template <class Visit>
void ForEachField(const Search& search, const Visit& visit) {
    std::size_t at = 0;
    const auto end = [&] {
        return search.WantedLength() == 0 ? (at + 1 < search.Length() ? at + 1 : Search::kNone) : search.Find(at);
    };
    if (search.Length() == 0) return;
    for (std::size_t found; (found = end()) != Search::kNone; at = found + search.WantedLength())
        if (!visit(at, found)) return;
    visit(at, search.Length());
}

sdk::Array* Split(sdk::String* text, sdk::String* delimiter) {
    const Search search(text, delimiter, false);
    static const Type element = TypeNamed("String");
    constexpr std::size_t kUsual = 8;  // room for the fields of a line as most are
    Ref<Array> parts = MakeArray(element);
    parts->values.reserve(kUsual);
    ForEachField(search, [&](std::size_t from, std::size_t to) {
        parts->values.push_back(Value(TextOfBytes(search.Between(from, to), EncodingOfText(text))));
        return true;
    });
    return parts.Detach();
}

sdk::Array* SplitAtBlanks(sdk::String* text) {
    const Ref<String> blank = MakeString(" ");
    return Split(text, blank.get());
}

// As many as Split gives.
std::int32_t FieldCount(sdk::String* text, sdk::String* delimiter, bool byBytes) {
    const Search search(text, delimiter, byBytes);
    std::int32_t count = 0;
    ForEachField(search, [&](std::size_t, std::size_t) { return ++count, true; });
    return count;
}

std::int32_t CountFields(sdk::String* text, sdk::String* delimiter) { return FieldCount(text, delimiter, false); }
std::int32_t CountFieldsB(sdk::String* text, sdk::String* delimiter) { return FieldCount(text, delimiter, true); }

// Counted from 1; empty for a field that isn't there.
sdk::String* Field(sdk::String* text, sdk::String* delimiter, std::int32_t number, bool byBytes) {
    const Search search(text, delimiter, byBytes);
    std::string_view field;
    std::int64_t left = number;
    ForEachField(search, [&](std::size_t from, std::size_t to) {
        if (--left == 0) field = search.Between(from, to);
        return left > 0;
    });
    return GiveString(field, EncodingOfText(text));
}

sdk::String* NthField(sdk::String* text, sdk::String* delimiter, std::int32_t number) {
    return Field(text, delimiter, number, false);
}
sdk::String* NthFieldB(sdk::String* text, sdk::String* delimiter, std::int32_t number) {
    return Field(text, delimiter, number, true);
}

// A text, when all parts are, or bytes, and how many.
std::size_t JoinedLength(const Values& parts, std::size_t delimiter, sdk::Encoding& encoding) {
    std::size_t length = parts.empty() ? 0 : delimiter * (parts.size() - 1);
    for (const Value& part : parts) {
        const std::size_t own = part.text().size();
        if (own > 0 && EncodingOf(part.string()) == sdk::Encoding::None) encoding = sdk::Encoding::None;
        length += own;
        if (length > kMostStringBytes) throw std::bad_alloc();
    }
    return length;
}

sdk::String* Join(sdk::Array* parts, sdk::String* delimiter) {
    const Array* array = FromPlugin(parts);
    if (!array) Fail(kDataRaises.nothingToJoin());
    sdk::Encoding encoding = sdk::Encoding::Utf8;
    const std::size_t length = JoinedLength(array->values, Bytes(delimiter).size(), encoding);
    char* to = nullptr;
    Ref<String> joined = MakeBlankString(length, encoding, to);
    const auto put = [&to](std::string_view bytes) {
        if (bytes.size() == 1) *to = bytes[0];  // as most delimiters are
        if (bytes.size() > 1) std::memcpy(to, bytes.data(), bytes.size());
        to += bytes.size();
    };
    for (const Value* part = array->values.begin(); part != array->values.end(); ++part) {
        if (part != array->values.begin()) put(Bytes(delimiter));
        put(part->text());
    }
    return joined.Detach();
}

sdk::String* JoinWithBlanks(sdk::Array* parts) {
    const Ref<String> blank = MakeString(" ");
    return Join(parts, blank.get());
}

void AddQuickForms() {
    AddQuickFormBy<&InStr>();
    AddQuickFormBy<&InStrB>();
    AddQuickFormBy<&InStrFrom>();
    AddQuickFormBy<&InStrFromB>();
    AddQuickFormBy<&Replace>();
    AddQuickFormBy<&ReplaceB>();
    AddQuickFormBy<&ReplaceAll>();
    AddQuickFormBy<&ReplaceAllB>();
    AddQuickFormBy<&Split>();
    AddQuickFormBy<&CountFields>();
    AddQuickFormBy<&NthField>();
    AddQuickFormBy<&Join>();
}

}  // namespace

void RegisterTextSearchFunctions(Runtime& runtime) {
    AddQuickForms();
    static const sdk::MethodRecord functions[] = {
        sdk::SharedMethod<"InStr(text as string, wanted as string) as integer", Guarded<&InStr>>(sdk::kMemberPortable),
        sdk::SharedMethod<"InStr(start as integer, text as string, wanted as string) as integer", Guarded<&InStrFrom>>(
            sdk::kMemberPortable),
        sdk::SharedMethod<"InStrB(text as string, wanted as string) as integer", Guarded<&InStrB>>(
            sdk::kMemberPortable),
        sdk::SharedMethod<"InStrB(start as integer, text as string, wanted as string) as integer",
                          Guarded<&InStrFromB>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Replace(text as string, wanted as string, by as string) as string", Guarded<&Replace>>(
            sdk::kMemberPortable),
        sdk::SharedMethod<"ReplaceB(text as string, wanted as string, by as string) as string", Guarded<&ReplaceB>>(
            sdk::kMemberPortable),
        sdk::SharedMethod<"ReplaceAll(text as string, wanted as string, by as string) as string", Guarded<&ReplaceAll>>(
            sdk::kMemberPortable),
        sdk::SharedMethod<"ReplaceAllB(text as string, wanted as string, by as string) as string",
                          Guarded<&ReplaceAllB>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Split(text as string) as string()", Guarded<&SplitAtBlanks>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Split(text as string, delimiter as string) as string()", Guarded<&Split>>(
            sdk::kMemberPortable),
        sdk::SharedMethod<"CountFields(text as string, delimiter as string) as integer", Guarded<&CountFields>>(
            sdk::kMemberPortable),
        sdk::SharedMethod<"CountFieldsB(text as string, delimiter as string) as integer", Guarded<&CountFieldsB>>(
            sdk::kMemberPortable),
        sdk::SharedMethod<"NthField(text as string, delimiter as string, number as integer) as string",
                          Guarded<&NthField>>(sdk::kMemberPortable),
        sdk::SharedMethod<"NthFieldB(text as string, delimiter as string, number as integer) as string",
                          Guarded<&NthFieldB>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Join(parts() as string) as string", Guarded<&JoinWithBlanks>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Join(parts() as string, delimiter as string) as string", Guarded<&Join>>(
            sdk::kMemberPortable),
    };
    runtime.RegisterFunctions(functions);
}

}  // namespace host
