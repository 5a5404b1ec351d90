// A table of digests in a text file: a line for each member and place, a column for each format.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace digests {

using Digest = std::uint32_t;

class DigestTable {
  public:
    explicit DigestTable(std::vector<std::string> columns) : columns_(std::move(columns)) {}

    // False when there is no such file or its columns are others.
    bool Read(const std::string& path);
    bool Write(const std::string& path) const;

    // The digests of a line, one a column; nothing where the table has no such line.
    std::vector<Digest> Line(const std::string& name) const;
    void SetLine(const std::string& name, std::vector<Digest> digests);

    // The names of all lines.
    std::vector<std::string> Names() const;

  private:
    std::vector<std::string> columns_;
    std::vector<std::string> names_;  // in the order of the file
    std::map<std::string, std::vector<Digest>> lines_;
};

}  // namespace digests
