@echo off
rem Runs verify.cmd in Windows Sandbox.
if not exist "%~dp0tests\morvane_verify.exe" (
    echo Unpack the whole archive first.
    pause
    exit /b 1
)
"%~dp0tests\morvane_verify.exe" /sandbox
exit /b %errorlevel%
