#ifndef OPTRELLA_STANDIN_AVAILABILITY_H
#define OPTRELLA_STANDIN_AVAILABILITY_H

/* What is there in which version does not matter here. */

#endif
