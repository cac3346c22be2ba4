#pragma once

namespace marlune::test {

/**
 * Declares that this program ends with views that the host has not destroyed, so their memory
 * counts as no leak. Has no effect without sanitizers.
 */
void leave_views_behind();

}  // namespace marlune::test
