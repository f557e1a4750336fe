#ifndef OPTRELLA_STANDIN_AVAILABILITYMACROS_H
#define OPTRELLA_STANDIN_AVAILABILITYMACROS_H

/* What is there in which version does not matter here. */

#endif
