// What the commands around a queue of tasks share.
#ifndef VELAGNSS_APPS_QUEUE_ARGUMENTS_H
#define VELAGNSS_APPS_QUEUE_ARGUMENTS_H

#include <string>
#include <vector>

#include "apps/velagnss/commands/Arguments.h"
#include "apps/velagnss/jobs/TaskQueue.h"
#include "apps/velagnss/relay/RelayJob.h"

namespace Host {

struct S_QueueArguments {
  std::string queue;
  std::string credentials;
};

// --queue and --credentials.
void DeclareQueue(CLI::App& app, S_QueueArguments& arguments);

// False, reported, when the queue cannot be reached.
bool OpenQueue(const S_QueueArguments& arguments, bool creates, C_TaskQueue& queue);

// Reports why the queue failed; returns an exit code.
int ReportQueueFailure(const C_TaskQueue& queue, const S_NatsFailure& failure);

// How tasks are to be decoded, as the command line says it.
struct S_TaskArguments {
  S_StreamArguments stream;
  S_FilterArguments filter;
};
void DeclareTask(CLI::App& app, S_TaskArguments& arguments);

// The words of the command line that a worker needs: what `app` has of the options of DeclareTask.
std::vector<std::string> TaskWords(const CLI::App& app);

// What such words come to. Returns an error text.
std::string ReadTaskWords(const std::vector<std::string>& words, S_RelayOptions& relay);

}  // namespace Host

#endif  // VELAGNSS_APPS_QUEUE_ARGUMENTS_H
