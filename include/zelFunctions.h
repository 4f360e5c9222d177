// How an application plugs its switches into the library and receives its texts.
//
// Everything is silent and every switch is false until the application says otherwise. The setters may be
// called from any thread at any time; a call under way finishes with what was set when it began. An empty
// function takes the plug out again. Every call runs on a copy of the function, possibly on several threads at
// once: keep what it changes outside of it, behind a lock. Texts are in the GBK code page.
#pragma once

#include "zelWeldDetectExport.h"

#include <cstdint>
#include <functional>
#include <string>

// The plug-ins of the application, and the grey levels of contrast.
namespace zel {

// They take one text.
using TDebugStringSink = std::function<void(const std::string& text)>;
using TMessageSink = std::function<void(const std::string& text, std::uint32_t colour)>;  // 0x00RRGGBB
// Says whether the switch of that name is on; has to give false for names that it does not know.
using TParamBoolSource = std::function<bool(const std::string& name)>;

// Receives debugging text, one call per line. An empty function: nobody does.
ZELWELDDETECT_EXPORT void setDebugStringSink(TDebugStringSink sink);

// Receives messages meant for the operator; empty: nobody does.
ZELWELDDETECT_EXPORT void setMessageSink(TMessageSink sink);

// Answers application switches, for example "NeedPrintPlateWeldInfo"; empty: all are false.
ZELWELDDETECT_EXPORT void setParamBoolSource(TParamBoolSource source);

}  // namespace zel
