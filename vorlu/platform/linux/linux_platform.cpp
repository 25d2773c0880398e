#include "vorlu/platform/linux/linux_platform.h"

namespace vorlu {

LinuxPlatform::LinuxPlatform(const std::string& root)
    : root_(root),
      host_(root_),
      clock_(host_),
      files_(root_, host_),
      urls_(root_),
      keychain_(files_, root_),
      consoleUser_(host_),
      device_(host_),
      power_(root_, host_, files_),
      cameras_(host_),
      focus_(host_),
      applications_(root_, host_, files_),
      systemLog_(files_),
      webView_(root_, files_, processes_),
      platform_{clock_, files_,   processes_, urls_,         security_,  keychain_, consoleUser_, device_,
                power_, cameras_, focus_,     applications_, systemLog_, console_,  webView_} {}

}  // namespace vorlu
