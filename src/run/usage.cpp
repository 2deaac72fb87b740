#include "run/usage.h"

#include <cstdio>

#include "run/version.h"

namespace zanvik {
namespace {

// Two lines end in a blank, and an empty line of the text has one; both are part of it.
constexpr char usage_text[] = ZANVIK_TITLE R"(

Usage:

  zanvik -log "log1 | log2 | .."   = pull data from extracted logs
  find /somedir -name *.evtx -type f | zanvik  -pipe [options]
  ls /somedir/*.evtx | zanvik  -pipe [options]
  zanvik -enumdir <folder> -num_subdirs <#> [options]

 Report options
  -pw                    = pull password changes [security log]
  -time                  = pull clock changes or updates [security logs]
  -logon                 = pull logons [security log]
  -startstop             = pull system start/stop times [system log]
  -creds                 = pull credential changes [security log]
  -usb                   = pull usb events [various logs]
  -cmdfile <filename>    = custom report defined by cmd file

 Processing options
  -pipe                  = pipe files into zanvik for processing
  -quiet                 = don't display status during run
  -filter <*partial*|*.ext> = filters stdin data from -pipe option

 Filter options
  -eventid "id1, id2, ."
  -string <substring>
  -start_time <time UTC> =  time in "MM/DD/YYYY HH:MM:SS" format
  -stop_time <time UTC>  =  time in "MM/DD/YYYY HH:MM:SS" format

 Basic options
  -csv                   = output in comma separated value format
  -csvl2t                = log2timeline output 
  -bodyfile [-allparams] = sleuthkit output 

 Additional options
  -dateformat mm/dd/yyyy = "yyyy-mm-dd" is the default
  -timeformat hh:mm:ss   = "hh:mm:ss.xxx" is the default
  -pair_datetime         = combine date/time into 1 field for csv
  -no_whitespace         = remove whitespace between csv delimiter
  -csv_separator "|"     = use a pipe char for csv separator
  -stats <file>          = generate summary statistics
  -inc_slack             = incl any records from slack as well

)";

}  // namespace

void print_usage() {
  std::fputs(usage_text, stderr);
  std::fflush(stderr);
}

void print_version() {
  std::fputs(ZANVIK_TITLE "\n", stderr);
  std::fflush(stderr);
}

}  // namespace zanvik
