// Starting long operations that can be followed and canceled.
#pragma once

#include "com/async.h"
#include "com/base_stream.h"
#include "com/named_call.h"
#include "com/operation_token.h"

#include <utility>

namespace Corvane::Com {

// Starts `work`(progress) on a worker, with the token of the script. For use inside a frame.
template <class Work>
void startOperation(const wchar_t* name, IDispatch* callback, const VARIANT& token, Work work) {
    startAsync(callback, named(name, [progress = progressOf(token), work = std::move(work)] {
                   return work(progress);
               }));
}

// The same for `work`(stream, progress).
template <class Work>
void startStreamOperation(const wchar_t* name, IDispatch* callback, SharedStream stream, const VARIANT& token,
                          Work work) {
    logStream(name, L"stream", *stream);
    startOperation(name, callback, token,
                   [stream = std::move(stream), work = std::move(work)](const SharedProgress& progress) {
                       return work(*stream, progress);
                   });
}

}  // namespace Corvane::Com
