/* Tollan: every public library header in one include. */
#ifndef TOLLAN_TOLLAN_H
#define TOLLAN_TOLLAN_H

#include <tollan/engine.h>
#include <tollan/logger.h>
#include <tollan/list.h>
#include <tollan/fmtio.h>
#include <tollan/utility.h>
#include <tollan/timerengine.h>
#include <tollan/rs232.h>
#include <tollan/debugger.h>
#include <tollan/ansi_c.h>
#include <tollan/rtcheck.h>

#endif
