// The casters of a run: a listener for each address, with the mounts that share it.
#ifndef VELAGNSS_APPS_CASTERS_H
#define VELAGNSS_APPS_CASTERS_H

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "apps/velagnss/net/Address.h"
#include "apps/velagnss/sinks/live/Readers.h"
#include "apps/velagnss/sinks/live/SinkThread.h"

namespace Host {

// What a caster knows of one of its mounts.
struct S_CasterMount {
  std::string record;  // its line of the source table
  std::string users;   // the name of a file with the accounts; empty: everybody may read

  // On the sink thread: a reader who may read it. Its head is the answer.
  std::function<void(C_Readers::S_Newcomer newcomer)> onReader;
};

class C_Caster;

class C_Casters {
 public:
  // `headTime`: how long a client has for its request.
  explicit C_Casters(C_SinkThread& thread, std::chrono::milliseconds headTime = std::chrono::seconds(10));
  ~C_Casters();
  C_Casters(const C_Casters&) = delete;
  C_Casters& operator=(const C_Casters&) = delete;

  // On the main thread, before pieces flow: begins to listen at the address, unless another mount has. Returns an error
  // text, empty when the mount is there.
  std::string Add(const S_Address& address, S_CasterMount mount);

  // On the sink thread: no reader comes any more.
  void Close();

  // On the sink thread, now and then.
  void CheckProgress(C_SinkThread::t_Clock::time_point now);

 private:
  C_SinkThread& m_thread;
  std::chrono::milliseconds m_headTime;
  std::map<std::string, std::unique_ptr<C_Caster>> m_casters;  // by host and port
};

// Whether the file has the account of a field "Authorization". Lines are "USER:PASSWORD"; a '#' begins a comment.
bool IsAuthorized(const std::string& usersFile, std::string_view authorization);

// Returns an error text, empty when the file can be read and has an account.
std::string CheckUsers(const std::string& usersFile);

}  // namespace Host

#endif  // VELAGNSS_APPS_CASTERS_H
