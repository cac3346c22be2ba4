#pragma once

#include <QList>

#include <map>
#include <string>
#include <vector>

class QMediaMetaData;

namespace marlune {

/**
 * Returns the entries by the names of their keys, such as "Title"; entries without a text are
 * empty.
 */
std::map<std::string, std::string> to_host(const QMediaMetaData& metadata);

/** Returns one map per track. */
std::vector<std::map<std::string, std::string>> to_host(const QList<QMediaMetaData>& tracks);

}  // namespace marlune
