#include "views/resource_server.h"

namespace marlune {

ResourceServer& resource_server()
{
    static ResourceServer server;
    return server;
}

}  // namespace marlune
