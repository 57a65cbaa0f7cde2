#pragma once

#include <optional>
#include <string>
#include <string_view>

// libgsf's property-set reader, as an independent judge of the streams the codec
// writes: the Comments text it reads from a summary-information stream, in UTF-8;
// nullopt when it refuses the stream or finds no Comments in it.
[[nodiscard]] std::optional<std::string> commentsReadByLibgsf(std::string_view stream);
