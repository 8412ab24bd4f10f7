#pragma once

namespace zorvik::core::platform {

// From this call on a request to end the process shows in EndRequested instead of ending it at
// once: SIGHUP, SIGINT and SIGTERM, but for those that are ignored already, as under nohup; on
// Windows Ctrl-C, Ctrl-Break, and the closing of the console, after which some seconds are left.
void CatchEndRequests();

// Whether one has come. Any thread may ask.
bool EndRequested();

}  // namespace zorvik::core::platform
