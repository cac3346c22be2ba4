#include "marlune/options.h"

namespace marlune::opts {

bool SANDBOXED = false;
bool LOGGING_DEBUG = false;
bool GPU_DISABLED = false;
bool FFMPEG_DEBUG = false;
std::string PATH_PROJECT_ROOT;
std::string FFMPEG_PROTOCOL_WHITELIST =
    "file,http,ftp,hls,icecast,ipfs,rtmp,rtmpe,rtmps,rtmpt,rtmpte,rtmpts,rtp,rtsp,tcp,udp,unix,zmq,"
    "amqp,crypto,fd";

}  // namespace marlune::opts
