/*
 * QOMath — retroreflection: angle systems and coefficients (CIE 54.2:2001,
 * ASTM E808, EN 1436 road-marking geometry).
 *
 * All angles are in degrees, in and out. Every conversion goes through the
 * same four axes: the illumination axis I (from the retroreflector centre to
 * the source), the observation axis O (to the receiver), the reference axis
 * R (the retroreflector's outward normal) and the datum axis D (a direction
 * in the retroreflector's face, perpendicular to R, marking its rotation).
 * Results are normalised to these ranges; signed angles lie in (-180, 180].
 *
 * CIE goniometer system (beta1, beta2, alpha, epsilon), as the goniometer
 * sets it: the first axis is perpendicular to the observation plane (the
 * plane of I and O), fixed in the laboratory; the second axis is
 * perpendicular to the first axis and to R and turns with beta1.
 *   beta1   [-180, 180]  rotation about the first axis, from I to the
 *                        projection of R on the observation plane; positive
 *                        when R turns away from the observation half-plane
 *   beta2   [-90, 90]    rotation about the second axis: the angle between R
 *                        and the observation plane, positive towards the
 *                        first axis (the first axis, "up" = the observation
 *                        side and I form a right-handed set)
 *   alpha   [0, 180]     observation angle, between I and O
 *   epsilon [-180, 180]  rotation of the retroreflector about R;
 *                        0 when D points to the observation side ("datum
 *                        up" at beta1 = beta2 = 0), positive
 *                        counter-clockwise as seen from the source
 * Identity: cos(beta) = cos(beta1) cos(beta2), beta the entrance angle.
 *
 * Intrinsic system (beta, omega_s, alpha, gamma), fixed to the retroreflector:
 *   beta    [0, 180]     entrance angle, between I and R
 *   omega_s [-180, 180]  orientation angle: from D to the entrance half-plane
 *                        (bounded by R, containing I), about R,
 *                        counter-clockwise seen from the front
 *   alpha   [0, 180]     observation angle
 *   gamma   [-180, 180]  presentation angle: from the half-plane bounded by
 *                        I and containing R to the observation half-plane
 *                        (bounded by I, containing O), about I,
 *                        counter-clockwise seen from the source
 * Application system (beta, alpha, gamma, omega_s), fixed to the observer:
 * the same entrance, observation and presentation angles; its orientation
 * angle runs the other way, from the entrance half-plane to D, and so is
 * the intrinsic omega_s negated.
 *
 * Road-marking geometry (EN 1436, CIE 73): angles measured from the road
 * surface, whose normal is R; D runs along the road towards the vehicle
 * (the projection of I).
 *   illumination [0, 90]     elevation of I above the road (1.24 at 30 m)
 *   observation  [0, 90]     elevation of O above the road (2.29 at 30 m);
 *                            not the CIE observation angle, which is then
 *                            their difference, 1.05
 *   azimuth      [-180, 180] horizontal angle from the projection of I to
 *                            that of O, counter-clockwise seen from above
 *                            (0 for the co-planar geometry)
 *
 * Undefined angles of degenerate geometries are set to 0: omega_s when
 * beta is 0 or 180, gamma when alpha is 0 or 180. With alpha 0 or 180 the
 * CIE observation plane is taken so that beta2 = 0 and beta1 >= 0, and
 * with R along I as well, so that epsilon = 0. The geometry itself is kept:
 * converting back gives the same axes.
 *
 * Status of the conversions: 1 success; -1 a null output pointer (nothing
 * written); -2 an input not finite or outside its range (outputs 0);
 * -3 (to the road-marking geometry) I or O below the surface.
 */
#ifndef QOMATH_RETRO_H
#define QOMATH_RETRO_H

#include "qomath/common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Angle systems ---------------------------------------------------------- */

QOMATH_API int RETRO_CIE_TO_INTRINSIC(float beta1, float beta2, float alpha, float epsilon,
                                      float* beta, float* omega_s, float* alpha_out, float* gamma);
QOMATH_API int RETRO_INTRINSIC_TO_CIE(float beta, float omega_s, float alpha, float gamma,
                                      float* beta1, float* beta2, float* alpha_out, float* epsilon);
QOMATH_API int RETRO_CIE_TO_APPLICATION(float beta1, float beta2, float alpha, float epsilon,
                                        float* beta, float* alpha_out, float* gamma, float* omega_s);
QOMATH_API int RETRO_APPLICATION_TO_CIE(float beta, float alpha, float gamma, float omega_s,
                                        float* beta1, float* beta2, float* alpha_out, float* epsilon);
QOMATH_API int RETRO_APPLICATION_TO_INTRINSIC(float beta, float alpha, float gamma, float omega_s,
                                              float* beta_out, float* omega_s_out, float* alpha_out,
                                              float* gamma_out);
QOMATH_API int RETRO_INTRINSIC_TO_APPLICATION(float beta, float omega_s, float alpha, float gamma,
                                              float* beta_out, float* alpha_out, float* gamma_out,
                                              float* omega_s_out);
/* Road-marking geometry to and from the CIE system. */
QOMATH_API int RETRO_ROADMARKING_TO_CIE(float illumination, float observation, float azimuth,
                                        float* beta1, float* beta2, float* alpha, float* epsilon);
QOMATH_API int RETRO_CIE_TO_ROADMARKING(float beta1, float beta2, float alpha, float epsilon,
                                        float* illumination, float* observation, float* azimuth);
/*
 * Elevations of the headlamp and the eye seen from a marking `distance`
 * ahead: atan(height / distance). EN 1436 (a driver 30 m away, eye at
 * 1.2 m, headlamp at 0.65 m) gives 2.29 and 1.24 degrees.
 * Returns 1; -1 for a null pointer; -2 unless distance > 0 and both heights
 * are >= 0 (all finite).
 */
QOMATH_API int RETRO_ROADMARKING_ANGLES(float distance_m, float eye_height_m, float lamp_height_m,
                                        float* observation, float* illumination);

/* ---- Coefficients ------------------------------------------------------------
 * E is the illuminance at the retroreflector on a plane perpendicular to I.
 * Each returns 0 on bad input: a non-finite argument, a negative intensity,
 * luminance or coefficient, an illuminance or area <= 0, a viewing angle
 * outside [0, 90). */

/* Coefficient of luminous intensity R_I = I / E, cd/lx. */
QOMATH_API double RETRO_COEFF_RI(float intensity_cd, float illuminance_lx);
/* Coefficient of retroreflection R_A = I / (E A), cd lx^-1 m^-2. */
QOMATH_API double RETRO_COEFF_RA(float intensity_cd, float illuminance_lx, float area_m2);
/* Coefficient of retroreflected luminance R_L = L / E, in mcd m^-2 lx^-1
 * (1000 L / E with L in cd/m^2). */
QOMATH_API double RETRO_COEFF_RL(float luminance_cd_m2, float illuminance_lx);
/* R_I = R_A A and R_A = R_I / A. */
QOMATH_API double RETRO_RA_TO_RI(float ra, float area_m2);
QOMATH_API double RETRO_RI_TO_RA(float ri, float area_m2);
/* A surface of area A seen at the viewing angle v (between O and R) shows
 * the luminance L = I / (A cos v), so R_L = 1000 R_A / cos v (mcd) and back.
 * For a road marking v = 90 - the observation elevation. */
QOMATH_API double RETRO_RA_TO_RL(float ra, float viewing_angle);
QOMATH_API double RETRO_RL_TO_RA(float rl_mcd, float viewing_angle);

#ifdef __cplusplus
}
#endif

#endif /* QOMATH_RETRO_H */
