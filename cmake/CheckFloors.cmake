cmake_minimum_required(VERSION 3.25)

# Checks that includes only point down the layers.
#   cmake -DROOT=<source tree> -P CheckFloors.cmake
#
# Each row: files, and which of our own headers they may include. The first row that fits a file counts.
set(leaves "framing/(Base64|BitBufAcc|BitLayout|Byte(Copy|Scan)|CRC24|Crc24(Field|Products|Sums)|CircularBuffer|QueueWindow|RawDataMessage|RunningCrc24|SevenOfEight|XorSum)")
set(app "apps/velagnss/")
set(rows
  "geo/"            "geo/"
  "records/"        "records/|geo/"
  "${leaves}\\."    "${leaves}\\."
  "binproto/"       "binproto/|records/|geo/|${leaves}\\."
  "textproto/"      "textproto/|records/|geo/|${leaves}\\."
  "rtcm3/"          "rtcm3/|records/|geo/|${leaves}\\."
  "positioning/"    "positioning/|rtcm3/|records/|geo/"
  "framing/"        "framing/|binproto/|textproto/|records/|geo/"
  "stream/"         "stream/|framing/|binproto/|textproto/|rtcm3/|records/|geo/"
  "apps/velagnss/os/"        "${app}os/"
  "apps/velagnss/text/"      "${app}text/|public"
  "apps/velagnss/net/"       "${app}(net|os|text)/"
  "apps/velagnss/input/"     "${app}(input|net|os|text)/"
  "apps/velagnss/sinks/"     "${app}(sinks|input|net|os|text)/"
  "apps/velagnss/record/"    "${app}(record|sinks|input|net|os|text)/|public"
  "apps/velagnss/pipeline/"  "${app}(pipeline|input|os|text)/|public"
  "apps/velagnss/geo/"       "${app}(geo|text)/|public"
  "apps/velagnss/epoch/"     "${app}(epoch|pipeline|text)/|public"
  "apps/velagnss/json/"      "${app}(json|epoch|pipeline|os|text)/|public"  # from here on: formats, which do not know each other
  "apps/velagnss/account/"   "${app}(account|pipeline|os|text)/|public"
  "apps/velagnss/report/"    "${app}(report|account|epoch|pipeline|record|os|text)/|public"
  "apps/velagnss/monitor/"   "${app}(monitor|json|account|epoch|pipeline|input|os|text)/|public"
  "apps/velagnss/track/"     "${app}(track|epoch|pipeline|os|text)/|public"
  "apps/velagnss/rinex/"     "${app}(rinex|pipeline|os|text)/|public"
  "apps/velagnss/nmea/"      "${app}(nmea|pipeline|os|text)/|public"
  "apps/velagnss/relay/"     "${app}(relay|json|pipeline|sinks|input|net|os|text)/|public"
  "apps/velagnss/jobs/"      "${app}(jobs|relay|json|pipeline|sinks|input|net|os|text)/|public"
  "apps/"                    "apps/|public"  # commands and main
  "examples/"       "public")

# The installed headers, from the lists that the build uses.
set(public)
foreach(folder stream framing binproto textproto rtcm3 positioning geo records)
  file(READ ${ROOT}/${folder}/CMakeLists.txt lists)
  string(REGEX MATCH "PUBLIC_HEADERS([^A-Z_]|[A-Z][a-zA-Z0-9_]*\\.h)*" headers "${lists}")
  string(REGEX MATCHALL "[A-Za-z0-9_]+\\.h" headers "${headers}")
  list(TRANSFORM headers PREPEND "${folder}/")
  list(APPEND public ${headers})
endforeach()
list(LENGTH public count)
if(count LESS 10)
  message(FATAL_ERROR "found only ${count} public headers: the lists could not be parsed")
endif()

function(floor_of file result)
  set(pairs ${rows})
  while(pairs)
    list(POP_FRONT pairs pattern allowed)
    if(file MATCHES "^${pattern}")
      set(${result} "${allowed}" PARENT_SCOPE)
      return()
    endif()
  endwhile()
  set(${result} "" PARENT_SCOPE)
endfunction()

set(faults 0)
file(GLOB_RECURSE files RELATIVE ${ROOT} ${ROOT}/framing/* ${ROOT}/binproto/* ${ROOT}/textproto/* ${ROOT}/rtcm3/* ${ROOT}/positioning/*
  ${ROOT}/geo/* ${ROOT}/records/* ${ROOT}/stream/* ${ROOT}/apps/* ${ROOT}/examples/*)
list(FILTER files INCLUDE REGEX "\\.(h|cpp)$")
foreach(file ${files})
  floor_of(${file} allowed)
  file(STRINGS ${ROOT}/${file} lines REGEX "^#include \"")
  foreach(line ${lines})
    string(REGEX REPLACE "^#include \"([^\"]+)\".*" "\\1" header "${line}")
    if(header STREQUAL "velagnss_export.h" OR (header IN_LIST public AND allowed MATCHES "public"))
      continue()
    endif()
    if(NOT header MATCHES "^(${allowed})")
      message(SEND_ERROR "${file} includes ${header}, which is not in a lower layer")
      math(EXPR faults "${faults} + 1")
    endif()
  endforeach()
endforeach()
if(faults)
  message(FATAL_ERROR "${faults} includes point up the layers")
endif()

# Two types of one name would be one type to the linker, and of two headers with one include guard the second is empty.
file(GLOB_RECURSE files RELATIVE ${ROOT} ${ROOT}/apps/*.h)
foreach(file ${files})
  file(STRINGS ${ROOT}/${file} lines REGEX "^((class|struct) [A-Za-z0-9_]+ ({|:|final)|#ifndef VELAGNSS_)")
  foreach(line ${lines})
    string(REGEX REPLACE "^#?[a-z]+ ([A-Za-z0-9_]+).*" "\\1" name "${line}")
    if(DEFINED home_of_${name})
      message(FATAL_ERROR "${file} and ${home_of_${name}} define ${name}")
    endif()
    set(home_of_${name} ${file})
  endforeach()
endforeach()
