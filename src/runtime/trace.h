#pragma once

#include <string_view>

namespace marlune {

/**
 * Called first by every exported entry point (kind "M": on a thread of the host) and by every
 * factory and start step (kind "T": on the Qt thread), with its qualified name. Empty, so that it
 * costs nothing in a game; a developer who hunts a hang gives it a body for a day.
 */
inline void trace([[maybe_unused]] std::string_view name, [[maybe_unused]] const char* kind) {}

/** "marlune::MView::reset" of "virtual void marlune::MView::reset() const", as compilers write it. */
constexpr std::string_view qualified_name(std::string_view signature)
{
    const std::string_view before_parameters = signature.substr(0, signature.find('('));
    return before_parameters.substr(before_parameters.rfind(' ') + 1);
}

}  // namespace marlune
