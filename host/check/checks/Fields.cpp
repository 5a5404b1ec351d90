// Fields of the instance data that properties read and write directly.
#include <algorithm>
#include <set>

#include "host/check/Checks.h"
#include "host/check/Findings.h"
#include "host/check/Passes.h"

namespace host::check {

namespace {

struct Field {
    std::string name;  // of the property
    Type type;
    std::int32_t from, to;  // bytes of the instance data

    bool Overlaps(const Field& other) const { return from < other.to && other.from < to; }
    bool IsSame(const Field& other) const { return from == other.from && type == other.type; }
};

// Each property once, although it may read and write the same field.
std::vector<Field> FieldsOf(const Class& type) {
    std::vector<Field> fields;
    for (const Property& property : type.properties()) {
        std::set<std::int32_t> offsets;
        for (const sdk::Accessor& accessor : {property.getter, property.setter})
            if (!accessor.function && accessor.fieldOffset >= 0) offsets.insert(accessor.fieldOffset);
        for (const std::int32_t offset : offsets)
            fields.push_back(
                {type.name() + "." + property.name, property.type, offset, offset + RowOf(property.type.kind).size});
    }
    return fields;
}

}  // namespace

Outcomes CheckFields(Context& context) {
    Findings findings;
    std::int64_t count = 0;
    for (const Class* type : context.Classes()) {
        const std::vector<Field> fields = FieldsOf(*type);
        count += static_cast<std::int64_t>(fields.size());
        for (std::size_t i = 0; i < fields.size(); ++i) {
            const Field& field = fields[i];
            findings.Expect(field.from % (field.to - field.from) == 0, field.name,
                            "is a field at byte " + std::to_string(field.from) + ", not aligned to its size");
            findings.Expect(field.to <= type->definition()->instanceDataSize, field.name,
                            "is a field that ends outside the instance");
            for (std::size_t j = 0; j < i; ++j) {
                const bool same = field.IsSame(fields[j]);
                findings.Expect(same || !field.Overlaps(fields[j]), field.name, "overlaps " + fields[j].name);
                findings.Hint(!same, field.name, "is the same field as " + fields[j].name);
            }
        }
    }
    return Only("fields", findings.Judged(Counted(count, "field")));
}

}  // namespace host::check
