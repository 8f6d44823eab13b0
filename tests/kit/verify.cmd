@echo off
rem Runs the tests; README.txt tells more.
if not exist "%~dp0tests\morvane_verify.exe" (
    echo Unpack the whole archive first.
    pause
    exit /b 1
)
"%~dp0tests\morvane_verify.exe" %*
exit /b %errorlevel%
