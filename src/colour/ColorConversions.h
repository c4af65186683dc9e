#pragma once

// Everything that converts one colour between the representations the engine works in. Include
// this header, or one of the smaller ones below when only a part is needed:
//
//   ColorMath.h          lerp, min3, max3, clamp, remap
//   CieConstants.h       epsilon, kappa and the Lab and Luv whites
//   TransferFunctions.h  gamma, sRGB, Rec. 709 and L* curves
//   ComponentPacking.h   8/16-bit samples, packed colours, clamping and range repairs
//   HueAngles.h          degrees/radians, wrapping, hue differences, fast arctangents
//   ColorCylinders.h     HSB, HSL, HCL and the luma helpers
//   CieConversions.h     RGB <-> XYZ <-> Lab / Luv <-> LCh and the composites the engine uses
//   ColorBlending.h      blending a colour with its shifted result
//   ColorDifferences.h   deltaE 76, 94, 2000 and CMC
//
// All functions are stateless, allocation-free and safe to call from any number of threads.

#include "colour/CieConstants.h"
#include "colour/CieConversions.h"
#include "colour/ColorBlending.h"
#include "colour/ColorComponents.h"
#include "colour/ColorCylinders.h"
#include "colour/ColorDifferences.h"
#include "colour/ColorMath.h"
#include "colour/ComponentPacking.h"
#include "colour/HueAngles.h"
#include "colour/TransferFunctions.h"
