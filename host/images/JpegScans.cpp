// A walk over a JPEG file's markers that decodes nothing.
#include "host/images/JpegScans.h"

namespace host::codec {

namespace {

enum Marker : int { kFirstRestart = 0xd0, kStart = 0xd8, kEnd = 0xd9, kScan = 0xda };

std::int64_t BlocksOf(const jpeg_component_info& component) {
    return std::int64_t{component.width_in_blocks} * component.height_in_blocks;
}

class Walker {
  public:
    Walker(std::FILE* stream, const jpeg_decompress_struct& jpeg) : stream_(stream), jpeg_(jpeg) {}

    JpegScans Walk(int most) {
        while (scans_.count <= most) {
            const int marker = NextMarker();
            scans_.ended = marker == kEnd;
            if (marker == EOF || scans_.ended) break;
            // Restart marks and the start have no content; neither has 1.
            if (marker == 1 || (marker >= kFirstRestart && marker <= kStart)) continue;
            if (marker == kScan)
                TakeScan();
            else
                SkipSegment();
        }
        return scans_;
    }

  private:
    int Byte() { return getc_unlocked(stream_); }

    // What is neither 255 and 0, which stand for a byte of the coded data, nor data.
    int NextMarker() {
        for (;;) {
            int byte = Byte();
            while (byte != 0xff && byte != EOF) byte = Byte();
            while (byte == 0xff) byte = Byte();
            if (byte != 0) return byte;
        }
    }

    // How much of a segment follows its length; 0 at the file's end.
    long Length() {
        const int high = Byte(), low = Byte();
        return low == EOF ? 0 : std::max(0, (high << 8 | low) - 2);
    }

    void SkipSegment() { std::fseek(stream_, Length(), SEEK_CUR); }

    void TakeScan() {
        long left = Length();
        const int components = left > 0 ? Byte() : 0;
        --left;
        for (int i = 0; i < components && left >= 2; ++i, left -= 2) {
            const int id = Byte();
            Byte();
            for (int k = 0; k < jpeg_.num_components; ++k)
                if (jpeg_.comp_info[k].component_id == id) scans_.blocks += BlocksOf(jpeg_.comp_info[k]);
        }
        ++scans_.count;
    }

    std::FILE* stream_;
    const jpeg_decompress_struct& jpeg_;
    JpegScans scans_;
};

}  // namespace

JpegScans CountScans(std::FILE* stream, const jpeg_decompress_struct& jpeg, int most) {
    const off_t position = ftello(stream);
    std::rewind(stream);
    const JpegScans scans = Walker(stream, jpeg).Walk(most);
    std::clearerr(stream);
    fseeko(stream, position, SEEK_SET);
    return scans;
}

}  // namespace host::codec
