#pragma once

namespace marlune {

/**
 * For a host that ends its process without M::destroy: has the library end before what stands now is
 * taken down. Processes take down last what they have set up first, so this is called again when more
 * stands, such as a graphics driver.
 */
void end_before_what_stands();

}  // namespace marlune
