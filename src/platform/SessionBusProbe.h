#pragma once

#include <chrono>
#include <string>

namespace tidemark {

// Whether the session bus at a D-Bus address answers at all, asked without the D-Bus library,
// which waits for ever on a bus that takes the connection and then says nothing.
enum class BusAnswer {
  answered,  // it spoke (or the address is of a kind not asked here)
  absent,    // nothing takes the connection: D-Bus fails fast by itself
  silent,    // it took the connection and said nothing before the deadline
};

// Connects to the first UNIX socket of `address` ("unix:path=…" or "unix:abstract=…") and asks
// for authentication, waiting at most `deadline` for the first line of the answer.
BusAnswer probeSessionBus(const std::string& address, std::chrono::milliseconds deadline);

}  // namespace tidemark
