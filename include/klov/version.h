/**
 * \file
 * Version of libklov and of the filter that is built with it.
 */
#ifndef KLOV_VERSION_H
#define KLOV_VERSION_H

#define KLOV_VERSION_MAJOR 0 /**< raised when a program has to be changed or built again */
#define KLOV_VERSION_MINOR 1 /**< raised when something is added */
#define KLOV_VERSION_PATCH 0 /**< raised for corrections */

#endif
