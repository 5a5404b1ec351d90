// An angle brought near zero by quarter turns, and the three shears that do the rest.
#include "plugin/geometry/Rotate.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "plugin/buffer/Destination.h"
#include "plugin/buffer/Operation.h"
#include "plugin/buffer/Saturate.h"
#include "plugin/geometry/ColumnShear.h"
#include "plugin/geometry/Turns.h"
#include "plugin/rows/Elementary.h"
#include "plugin/rows/Skew.h"
#include "plugin/services/HostServices.h"

namespace tqx {

namespace {

struct Background {
    std::uint8_t red, green, blue, alpha, gray;
};

// What is left of an angle after an exact turn.
struct Residual {
    double degrees, sine, cosine;
    double tangent;  // of half the angle

    explicit Residual(double angle)
        : degrees(angle),
          sine(rows::Sin(Radians())),
          cosine(rows::Cos(Radians())),
          tangent(rows::Tan(Radians() * 0.5)) {}

    double Radians() const { return degrees * 3.141592653589793 / 180; }
};

// The angle in 0 .. 360. A tiny negative one becomes 360 itself and is sheared by it.
double Normalize(double angle) {
    const double rest = std::fmod(angle, 360);
    return rest < 0 ? rest + 360 : rest;
}

// The picture turned to within 45 degrees of the angle, and what is left to turn.
OwnedObject PreTurn(sdk::Object* self, double angle, double* rest) {
    if (angle > 45 && angle <= 135) {
        *rest = angle - 90;
        return OwnedObject(Rotate90slow(self, nullptr));
    }
    if (angle > 135 && angle <= 225) {
        *rest = angle - 180;
        return OwnedObject(Rotate180(self, nullptr));
    }
    if (angle > 225 && angle <= 315) {
        *rest = angle - 270;
        return OwnedObject(Rotate270slow(self, nullptr));
    }
    *rest = angle;
    return OwnedObject::Retain(self);
}

// Gray first, of which alpha is not turned.
bool ChooseSheared(const PixelBuffer& buffer, const Background& background, ShearedChannels* channels) {
    if (!buffer.IsGray && !buffer.IsRGB) return false;
    if (buffer.IsGray)
        *channels = {rows::ChannelSet::Gray, {background.gray}};
    else
        *channels = {buffer.HasAlpha ? rows::ChannelSet::RgbAlpha : rows::ChannelSet::Rgb,
                     {background.red, background.green, background.blue, background.alpha}};
    return true;
}

// The picture of a pass from another one, made for `owner`.
class Pass {
  public:
    Pass(sdk::Object* owner, const RowCursor& from, std::int64_t width, std::int64_t height)
        : picture_(MakeDestinationToFinish(owner, Saturate(width), Saturate(height), from->ImageFormat)) {
        if (!picture_) return;
        rows_.Open(*BufferOf(picture_.Get()));
        ready_ = Begin({&rows_}) && from.Stands();
    }

    // False when there is no picture to be had or script code took either one meanwhile.
    explicit operator bool() const { return ready_; }

    RowCursor& Rows() { return rows_; }

    // Gives up the picture, or gives it to the caller.
    void Drop() { picture_ = {}; }
    sdk::Object* Give() {
        FinishPicture(*BufferOf(picture_.Get()));
        return picture_.Give();
    }

  private:
    OwnedObject picture_;
    RowCursor rows_;
    bool ready_ = false;
};

rows::SkewPlan PlanRows(const RowCursor& source, const RowCursor& destination, const ShearedChannels& channels) {
    return rows::PlanSkew(rows::ChannelCount(channels.set), LayoutOf(source.Picture(), channels.set),
                          LayoutOf(destination.Picture(), channels.set), channels.background);
}

// Shears row y of the source by a distance into row y of the destination. A row that the source
// doesn't have leaves nothing but background.
void ShearRow(RowPairs& pairs, const RowCursor& source, RowCursor& destination, const rows::SkewPlan& plan,
              std::int32_t y, double distance) {
    if (y >= destination->Height) return;
    const double whole = std::floor(distance);
    const RowPair pair = y < source->Height ? pairs.At(y, y) : RowPair{nullptr, destination.Row(y)};
    if (pair)
        rows::SkewRow(plan, distance - whole, static_cast<std::int64_t>(whole), pair.source, source->Width,
                      pair.destination, destination->Width);
    else if (pair.destination)
        rows::FillBackground(plan, pair.destination, destination->Width);
}

void ShearAcross(RowCursor& source, RowCursor& destination, const ShearedChannels& channels, double tangent) {
    const rows::SkewPlan plan = PlanRows(source, destination, channels);
    RowPairs pairs(source, destination);
    const std::int32_t height = source->Height;
    const RowRange range = CommonRows(destination.Rows(), {0, height});
    for (std::int32_t y = range.first; y < range.end; ++y) {
        const double row = tangent >= 0 ? y : static_cast<double>(y) - height;
        ShearRow(pairs, source, destination, plan, y, tangent * (row + 0.5));
    }
}

// Row by row further by the tangent, the distances added up.
void ShearBack(RowCursor& source, RowCursor& destination, const ShearedChannels& channels, double start, double tangent,
               std::int32_t rowCount) {
    const rows::SkewPlan plan = PlanRows(source, destination, channels);
    RowPairs pairs(source, destination);
    double distance = start;
    const std::int32_t end = std::min(rowCount, destination.Rows().end);
    for (std::int32_t y = 0; y < end; ++y, distance = distance + tangent)
        ShearRow(pairs, source, destination, plan, y, distance);
}

// The three shears. `turned` is given up as soon as it has been read.
sdk::Object* Shear(sdk::Object* owner, OwnedObject turned, const Residual& angle, const ShearedChannels& channels) {
    RowCursor picture(*BufferOf(turned.Get()));
    if (!Begin({&picture})) return nullptr;
    const double width = picture->Width, height = picture->Height;
    const double sine = angle.sine, cosine = angle.cosine, tangent = angle.tangent;

    Pass across(owner, picture, std::int64_t{picture->Width} + Truncate(height * std::abs(tangent)), picture->Height);
    if (!across) return nullptr;
    RowCursor& first = across.Rows();
    ShearAcross(picture, first, channels, tangent);
    turned = {};

    Pass down(owner, first, first->Width, Truncate(height * cosine + width * std::abs(sine)) + std::int64_t{1});
    if (!down) return nullptr;
    RowCursor& second = down.Rows();
    const double top = sine <= 0 ? -sine * (width - first->Width) : sine * (width - 1);
    if (!ShearColumns(first, second, channels, top, sine)) return nullptr;
    across.Drop();

    const std::int32_t rows = Saturate(Truncate(width * std::abs(sine) + height * cosine) + std::int64_t{1});
    Pass back(owner, second, Truncate(height * std::abs(sine) + width * cosine) + std::int64_t{1}, rows);
    if (!back) return nullptr;
    const double start = sine < 0 ? tangent * (-sine * (width - 1) + 1 - rows) : sine * (width - 1) * -tangent;
    ShearBack(second, back.Rows(), channels, start, tangent, rows);
    return back.Give();
}

}  // namespace

sdk::Object* Rotate(sdk::Object* self, double angle, std::int32_t red, std::int32_t green, std::int32_t blue,
                    std::int32_t alpha, std::int32_t gray) {
    if (!std::isfinite(angle)) return nullptr;
    angle = Normalize(angle);
    if (angle == 0) return OwnedObject::Retain(self).Give();
    if (angle == 90) return Rotate90slow(self, nullptr);
    if (angle == 180) return Rotate180(self, nullptr);
    if (angle == 270) return Rotate270slow(self, nullptr);
    double rest;
    OwnedObject turned = PreTurn(self, angle, &rest);
    const auto byte = [](std::int32_t value) { return static_cast<std::uint8_t>(value); };
    ShearedChannels channels;
    if (!turned || !ChooseSheared(*BufferOf(turned.Get()),
                                  {byte(red), byte(green), byte(blue), byte(alpha), byte(gray)}, &channels))
        return nullptr;
    return Shear(self, std::move(turned), Residual(rest), channels);
}

}  // namespace tqx
