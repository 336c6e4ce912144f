// What a cancel does to the job.
#ifndef ZR7700_STATUS_JOB_CANCEL_H_
#define ZR7700_STATUS_JOB_CANCEL_H_

namespace zr7700 {

// True once the job is cancelled. The first call after SIGTERM brings the cancel's effects about
// before it answers: the status thread is stopped and joined, the shared status memory released.
// That takes as long as the thread's last read or notice does, at worst some 13 seconds. Main
// thread.
bool JobCancelled();

}  // namespace zr7700

#endif  // ZR7700_STATUS_JOB_CANCEL_H_
