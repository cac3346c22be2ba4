#pragma once

#include <QList>

#include <map>
#include <string>
#include <vector>

class QMediaMetaData;

namespace marlune {

/** The entries by the names of their keys, as in "Title"; what has no text is empty. */
std::map<std::string, std::string> to_host(const QMediaMetaData& metadata);

/** One map a track. */
std::vector<std::map<std::string, std::string>> to_host(const QList<QMediaMetaData>& tracks);

}  // namespace marlune
