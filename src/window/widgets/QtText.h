#pragma once

#include <QString>
#include <string>
#include <string_view>

namespace corvane {

/// Text of a device or a site (Windows-1252, CR LF) as Qt shows it, each line end as one LF.
QString fromDevice(std::string_view text1252);

/// A tool tip that shows what a device, a site or a file says as it stands, whatever markup it may look like.
QString plainToolTip(const QString& text);

/// A typed answer for the device; what Windows-1252 lacks becomes "?".
std::string toDevice(const QString& text);

/// Paths are the system's bytes.
QString fromPath(const std::string& path);
std::string toPath(const QString& path);

}  // namespace corvane
