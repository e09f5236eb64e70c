// The seam between the component and the machine: small abstract classes, one for each concern, gathered in one record
// that the embedding application installs once, before it uses anything else of the component. The record and what it
// points to belong to the application and must outlive the component's use. One thread.
#pragma once

#include "base/TextEncoding.h"
#include "base/Types.h"

namespace tallybook {

class Clock;
class FileDialogs;
class FileSystem;
class InputQueue;
class Keyboard;
class MessageBoxes;
class RegistryOperations;
class Screen;
class Shell;
class StopWitness;
class Wheel;

struct Platform {
  Clock* clock = nullptr;
  FileSystem* files = nullptr;
  MessageBoxes* message_boxes = nullptr;
  InputQueue* input = nullptr;
  Screen* screen = nullptr;
  // Each of these is null on a platform that has nothing of the kind.
  FileDialogs* file_dialogs = nullptr;
  Shell* shell = nullptr;
  Keyboard* keyboard = nullptr;
  Wheel* wheel = nullptr;
  RegistryOperations* registry = nullptr;
  Text application_title;                              // the caption of a message box that is given none
  TextEncoding text_encoding = TextEncoding::kDetect;  // of the text files that imports read
  StopWitness* stop_witness = nullptr;                 // may be null
};

// Installs the platform for the process. Failure 91 (object not set), with what was installed before left in place,
// when one of the pointers is not set. May be called again, as tests do.
void InstallPlatform(const Platform& platform);
// The installed platform. Failure 91 (object not set) before one is installed.
[[nodiscard]] Platform& ThePlatform();
[[nodiscard]] bool IsPlatformInstalled();
// Back to none, before the objects that it points to go. For tests.
void RemovePlatform();

}  // namespace tallybook
