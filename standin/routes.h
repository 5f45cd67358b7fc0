#pragma once

namespace httplib {
class Server;
}

namespace kibo::standin {

class World;

/// Everything the server answers: the page and its files, what the page asks for (/page/…), and the control
/// interface for other programs (/control/…). `world` must outlive `server`.
void addRoutes(httplib::Server& server, World& world);

}  // namespace kibo::standin
