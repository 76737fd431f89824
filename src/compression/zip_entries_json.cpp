#include "compression/zip_entries_json.h"

#include <fmt/format.h>

#include <string>
#include <utility>

namespace Corvane::Compression {
namespace {

std::string dateText(const ZipDate& date) {
    if (!date.isValid())
        return {};
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}", date.year, date.month, date.day, date.hour,
                       date.minute, date.second);
}

}  // namespace

Json::Value entriesJson(const ZipEntries& entries) {
    Json::Value list(Json::arrayValue);
    for (const ZipEntry& entry : entries) {
        Json::Value item(Json::objectValue);
        item["index"] = list.size();
        item["name"] = entry.name;
        item["size"] = Json::UInt64{entry.size};
        item["packedSize"] = Json::UInt64{entry.packedSize};
        item["crc"] = Json::UInt{entry.crc};
        item["date"] = dateText(entry.date);
        item["directory"] = entry.directory;
        item["encrypted"] = entry.encrypted;
        list.append(std::move(item));
    }
    return list;
}

}  // namespace Corvane::Compression
