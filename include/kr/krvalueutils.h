// KR::ValueUtils: checked conversions between KR::KRValue and typed records.
//
// Readers (extract...FromKRValue) check the shape of a value and fill a typed
// output; a malformed value throws std::runtime_error whose message names the
// argument (`name`) and, for numbers, the field (`fieldName`). No reader
// catches, wraps or extends an exception of a reader it calls, so the message
// a caller sees is the innermost one. Writers lay a record out as a value
// array in a fixed positional order.
//
// Corrections that are not failures (a clipped number, for instance) are
// logged as warnings (level 3) in the log category "KRValueUtils", with an
// empty file name, line 0 and the function's name. One correction is not
// logged but written to standard error, whatever the log's handlers: the
// repair of a nearly valid transform (extractTransformFromKRValue, hence also
// the transform list and metrical-data readers). Nothing else is printed.
//
// Every function is a free function without state: calls from several threads
// are independent as long as they do not share output arguments.
//
// This header includes the header of every family, kr/valueutils/<family>.h;
// a source that uses one family can include its header alone.
#pragma once

#include <kr/valueutils/durations.h>
#include <kr/valueutils/geometry.h>
#include <kr/valueutils/geometrylists.h>
#include <kr/valueutils/geometrywriters.h>
#include <kr/valueutils/keys.h>
#include <kr/valueutils/lists.h>
#include <kr/valueutils/locate.h>
#include <kr/valueutils/motionconfig.h>
#include <kr/valueutils/paths.h>
#include <kr/valueutils/restrequests.h>
#include <kr/valueutils/scalars.h>
#include <kr/valueutils/status.h>
#include <kr/valueutils/supportsequences.h>
#include <kr/valueutils/trajectories.h>
