#pragma once

#include <source_location>
#include <string_view>

namespace marlune {

/**
 * "marlune::MView::reset" of "virtual void marlune::MView::reset() const", as compilers write it.
 */
constexpr std::string_view qualified_name(std::string_view signature)
{
    const std::string_view before_parameters = signature.substr(0, signature.find('('));
    return before_parameters.substr(before_parameters.rfind(' ') + 1);
}

/** The name of a traced function, or its signature, from which get() takes the name. */
class TracedName {
public:
    TracedName(const char* name) : text_(name) {}
    TracedName(const std::source_location& function)
        : text_(function.function_name()), is_signature_(true)
    {
    }

    std::string_view get() const { return is_signature_ ? qualified_name(text_) : text_; }

private:
    const char* text_;
    bool is_signature_ = false;
};

/**
 * Called first by every exported entry point (kind "M", on a thread of the host) and by every
 * factory and start step (kind "T", on the Qt thread), with its qualified name. Empty, so that it
 * costs nothing in a game; a developer who looks for a hang can give it a body.
 */
inline void trace([[maybe_unused]] TracedName name, [[maybe_unused]] const char* kind) {}

}  // namespace marlune
