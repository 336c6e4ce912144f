// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "status/test_notice.h"

#include <atomic>
#include <utility>

#include "status/utility_notices.h"

namespace zr7700 {
namespace {

std::atomic<int> error_notices = 0;
std::atomic<int> other_notices = 0;
int notice_result = kNoticeNoReply;
std::function<void()> notice_hook;

}  // namespace

int NotifyPrinterError(bool wait_for_reply) {
  (wait_for_reply ? other_notices : error_notices)++;
  if (notice_hook) notice_hook();
  return notice_result;
}

namespace test {

void ScriptNotices(int result, std::function<void()> hook) {
  error_notices = 0;
  other_notices = 0;
  notice_result = result;
  notice_hook = std::move(hook);
}

int ErrorNotices() { return error_notices.load(); }
int OtherNotices() { return other_notices.load(); }

}  // namespace test
}  // namespace zr7700
