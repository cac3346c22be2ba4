#pragma once

namespace marlune::test {

/**
 * Says that this program ends with views that nobody has destroyed, whose memory is then no leak.
 * Without sanitizers nothing is looked for anyway.
 */
void leave_views_behind();

}  // namespace marlune::test
